#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

// Plays the files of a folder to a fuzz target, each from memory of exactly its size. Fails where there are none.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments)
{
    if (count != 2)
    {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    int played = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1]))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        const auto image = std::make_unique<std::uint8_t[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), image.get());
        std::printf("%s\n", entry.path().filename().c_str());
        std::fflush(stdout); // what a crash was met in
        LLVMFuzzerTestOneInput(image.get(), bytes.size());
        ++played;
    }
    return played > 0 ? 0 : 1;
}
