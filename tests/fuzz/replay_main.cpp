// Runs a fuzzer without a fuzzing engine: over its corpus, then over mutated copies of it, the same in every
// run. Keeps an input for which a check does not hold.
// SPDX-License-Identifier: MIT
#include "tests/support/random_source.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
/// Whether the inputs have reached what the fuzzer tests; reports what they have not.
extern "C" __attribute__((weak)) bool reachedAll();

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> readCorpus(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Bytes> corpus;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return corpus;
}

Bytes changed(Bytes bytes, RandomSource& random)
{
    for (int changes = random.between(1, 4); changes > 0; --changes) {
        const auto at = static_cast<std::size_t>(random.below(static_cast<int>(bytes.size()) + 1));
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const auto value = static_cast<std::uint8_t>(random.below(256));
        if (at == bytes.size() || random.oneIn(3))
            bytes.insert(place, value);
        else if (random.oneIn(2))
            bytes.erase(place);
        else
            *place = value;
    }
    return bytes;
}

Bytes input; ///< the one that is being tried
/// The file for an input for which a check does not hold. Absolute, because a fuzzer may change its folder.
std::string kept;

/// Writes `input` to the file `kept`, when the process is about to abort.
void keepInput(int)
{
    const int file = open(kept.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0 && write(file, input.data(), input.size()) == static_cast<ssize_t>(input.size()))
        std::cerr << "the input is in " << kept
                  << "; to try it again, put it alone in a folder and name that as CORPUS" << std::endl;
}

void tryInput(const Bytes& bytes)
{
    input = bytes;
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " CORPUS CHANGED_COPIES\n";
        return 2;
    }
    kept = std::filesystem::absolute(std::filesystem::path(argv[0]).filename()).string() + ".input";
    std::signal(SIGABRT, keepInput);
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);
    const std::vector<Bytes> corpus = readCorpus(argv[1]);
    for (const Bytes& bytes : corpus)
        tryInput(bytes);
    RandomSource random(1); // the same copies in every run
    const int copies = std::atoi(argv[2]);
    for (int k = 0; k < copies && !corpus.empty(); ++k)
        tryInput(changed(random.oneOf(corpus), random));
    std::cout << corpus.size() << " files and " << copies << " changed copies\n";
    return corpus.empty() || (reachedAll && !reachedAll()) ? 1 : 0;
}
