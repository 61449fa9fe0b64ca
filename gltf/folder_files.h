#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace gltf
{

/// Where the files beside a document come from.
class SideFiles
{
public:
    SideFiles() = default;
    SideFiles(const SideFiles&) = delete;
    SideFiles& operator=(const SideFiles&) = delete;
    virtual ~SideFiles() = default;

    /// The first `most_bytes` of the file at `path`, which RelativePathOf gave; fewer where it is shorter. Throws
    /// Error, without a place, when it may not or cannot be read.
    virtual std::string Read(const std::string& path, std::size_t most_bytes) = 0;
};

/// Regular files at or below a folder, links resolved.
class FolderFiles : public SideFiles
{
public:
    explicit FolderFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::string Read(const std::string& path, std::size_t most_bytes) override;

private:
    std::filesystem::path folder_;
};

} // namespace gltf
