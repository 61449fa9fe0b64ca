#pragma once

#include "tev2_loader/status.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tv2
{

/// How a process of a pool ended, and what it printed.
struct EndedProcess
{
    std::size_t tag = 0;
    unsigned long id = 0; ///< the system's number
    int exit_code = 0;    ///< where `crash` is empty
    std::string crash;    ///< how the system or another process ended it: "killed", "Segmentation fault"
    std::string out;
    std::string err; ///< its first megabyte
};

/// Programs that run side by side, without input. Processes that still run when the pool ends are stopped, also when
/// this program is killed. Use it on one thread, which has to live as long as the processes.
class ProcessPool
{
public:
    ProcessPool();
    ~ProcessPool();
    ProcessPool(const ProcessPool&) = delete;
    ProcessPool& operator=(const ProcessPool&) = delete;

    /// The most processes that a pool of this system takes.
    static std::size_t Limit();

    /// Starts the program `command[0]` with arguments; `tag` comes back when it ends. Fails with the system's reason.
    TEV2_LOADER::Status Start(std::size_t tag, const std::vector<std::string>& command);

    std::size_t Running() const;

    /// Waits until a process ends, for at most about a tenth of a second, and returns those that ended.
    std::vector<EndedProcess> Wait();

    /// Stops all processes at once, whatever they are doing, and waits for their end.
    std::vector<EndedProcess> Stop();

private:
    class System;
    std::unique_ptr<System> system_;
};

} // namespace tv2
