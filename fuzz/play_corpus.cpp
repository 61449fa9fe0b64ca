#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

// Plays the files of folders to a fuzz target, each from memory of exactly its size. Fails for a folder without files.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

int Play(const char* folder)
{
    int played = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        const auto image = std::make_unique<std::uint8_t[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), image.get());
        std::printf("%s\n", entry.path().filename().string().c_str());
        std::fflush(stdout); // before a crash
        LLVMFuzzerTestOneInput(image.get(), bytes.size());
        ++played;
    }
    return played;
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2)
    {
        std::fprintf(stderr, "usage: %s FOLDER...\n", arguments[0]);
        return 2;
    }
    return std::all_of(arguments + 1, arguments + count, Play) ? 0 : 1;
}
