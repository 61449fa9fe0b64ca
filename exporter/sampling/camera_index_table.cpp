#include "exporter/sampling/camera_index_table.h"

namespace tev2_exporter
{
namespace
{

std::uint64_t Key(const void* camera)
{
    return reinterpret_cast<std::uintptr_t>(camera);
}

} // namespace

void CameraIndexTable::Insert(const void* camera, std::int32_t index)
{
    const std::size_t slot = Probe(Key(camera));
    if (slot != kSlots)
        slots_[slot] = {Key(camera), index};
}

std::int32_t CameraIndexTable::Find(const void* camera) const
{
    const std::size_t slot = Probe(Key(camera));
    return slot != kSlots && slots_[slot].camera != 0 ? slots_[slot].index : -1;
}

std::size_t CameraIndexTable::Probe(std::uint64_t key) const
{
    const std::size_t home = static_cast<std::uint32_t>(key) % kSlots;
    for (std::size_t step = 0; step < kSlots; ++step)
    {
        const std::size_t slot = (home + step) % kSlots;
        if (slots_[slot].camera == key || slots_[slot].camera == 0)
            return slot;
    }
    return kSlots;
}

} // namespace tev2_exporter
