// SPDX-License-Identifier: MIT
//
// Runs a fuzzer's target once on each file given, or on each file in the folders given: the corpus and the regressions
// as a test, with any compiler.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

std::vector<std::filesystem::path> inputsIn(const std::filesystem::path& path)
{
    if (!std::filesystem::is_directory(path))
        return {path};
    std::vector<std::filesystem::path> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        inputs.push_back(entry.path());
    return inputs;
}

void run(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    file.exceptions(std::ios::badbit | std::ios::failbit);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // Said before the run, because a fault ends the process.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv)
{
    std::size_t runs = 0;
    for (int i = 1; i < argc; ++i)
        for (const std::filesystem::path& path : inputsIn(argv[i]))
        {
            run(path);
            ++runs;
        }
    std::printf("%zu inputs\n", runs);
    return runs != 0 ? 0 : 1;
}
