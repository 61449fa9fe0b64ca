#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <cxxabi.h>
#include <thread>

namespace tev2_python
{

/// Calls take, which takes the GIL. Python ends the threads that want it while the interpreter ends, which no
/// destructor survives: they wait for the end of the process instead.
template <typename Take>
void TakeGil(const Take& take)
{
    try
    {
        take();
    }
    catch (const abi::__forced_unwind&)
    {
        for (;;)
            std::this_thread::sleep_for(std::chrono::hours(1));
    }
}

/// The GIL is free while this lives.
class WithoutGil
{
public:
    WithoutGil() = default;
    WithoutGil(const WithoutGil&) = delete;
    WithoutGil& operator=(const WithoutGil&) = delete;
    ~WithoutGil()
    {
        TakeGil([this] { PyEval_RestoreThread(state_); });
    }

private:
    PyThreadState* state_ = PyEval_SaveThread();
};

/// Takes the GIL back for a while.
class WithGil
{
public:
    WithGil()
    {
        TakeGil([this] { state_ = PyGILState_Ensure(); });
    }
    WithGil(const WithGil&) = delete;
    WithGil& operator=(const WithGil&) = delete;
    ~WithGil() { PyGILState_Release(state_); }

private:
    PyGILState_STATE state_{};
};

} // namespace tev2_python
