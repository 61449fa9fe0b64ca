// Loads growing files at four sizes, each double the one before, through MeasuredRead. growth.py counts the
// instructions.
//
// usage: growing_bodies             prints the names of the cases
//        growing_bodies NAME...     plays these

#include "tests/tev2_loader/robustness/dense_files.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <string_view>

extern "C" void MeasuredRead(const std::function<void()>& read);

extern "C" __attribute__((noinline)) void MeasuredRead(const std::function<void()>& read)
{
    read();
    asm volatile(""); // not the last call: as a jump it would not count as one of this function
}

namespace
{

using namespace tv2_tests;

constexpr std::size_t kSmallest = 4'000;
constexpr int kDoublings = 3;

std::vector<DenseFile> AllFiles(std::size_t size)
{
    std::vector<DenseFile> files = DenseFiles(size);
    std::ranges::move(DenseChunks(size), std::back_inserter(files));
    for (const DenseBody& body : DenseBodies(size))
    {
        files.push_back({"typed " + body.what, body.Typed()});
        files.push_back({"kept " + body.what, body.Kept()});
    }
    for (DenseFile& file : files)
        std::ranges::replace(file.what, ' ', '_');
    return files;
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 1)
        for (const DenseFile& file : AllFiles(kSmallest))
            std::puts(file.what.c_str());
    std::vector<std::vector<DenseFile>> sizes;
    for (int doubling = 0; count > 1 && doubling <= kDoublings; ++doubling)
        sizes.push_back(AllFiles(kSmallest << doubling));
    for (int name = 1; name < count; ++name)
    {
        for (const std::vector<DenseFile>& files : sizes)
        {
            const auto named = std::ranges::find(files, std::string_view(arguments[name]), &DenseFile::what);
            MeasuredRead([&] { LoadImageOf(named->image.data, true); });
        }
    }
    return 0;
}
