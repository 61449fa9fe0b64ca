#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

/// What a run of the command left behind.
struct CommandResult
{
    int exit_code = -1; ///< -1 when it did not end by itself
    std::string out;
    std::string err;
    long peak_kilobytes = 0; ///< of memory that was resident at one time

    /// The standard output as JSON; a failed test and null when it is none.
    nlohmann::json Json() const;
};

/// Runs the built command with these arguments and waits for it.
CommandResult RunTv2(const std::vector<std::string>& arguments);

/// A folder of its own that is gone with the object.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};
