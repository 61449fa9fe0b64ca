#pragma once

#include <string>

// An X server without a screen, for the life of the object; DISPLAY points to it.
class VirtualDisplay
{
public:
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    // Why there is none; empty when it runs.
    const std::string& Problem() const { return problem_; }

private:
    int process_ = 0;
    std::string problem_;
};
