#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tev2_exporter
{

/// Finds the index of an exported camera by the camera's address: 127 slots, open addressing, linear probing
/// from the low 32 bits of the address modulo 127. Address 0 marks an empty slot. A full table takes no more
/// cameras, and those count as not exported.
class CameraIndexTable
{
public:
    /// Stores `index` for `camera` (not null), over an earlier index of the same camera.
    void Insert(const void* camera, std::int32_t index);

    /// The stored index, or -1.
    std::int32_t Find(const void* camera) const;

private:
    struct Slot
    {
        std::uint64_t camera = 0;
        std::int32_t index = 0;
    };

    static constexpr std::size_t kSlots = 127;

    /// The slot that holds `key`, else the empty slot it belongs into, else kSlots.
    std::size_t Probe(std::uint64_t key) const;

    std::array<Slot, kSlots> slots_;
};

} // namespace tev2_exporter
