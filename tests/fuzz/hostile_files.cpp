// Makes files from bytes.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/hostile_files.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// Filled once, because the instrumented loop takes far longer than the rest of a run.
QByteArray patterned(int length, int seed)
{
    static const QByteArray pattern = [] {
        QByteArray bytes(200000, '\0');
        for (int k = 0; k < bytes.size(); ++k)
            bytes[k] = static_cast<char>(k * 7 + k / 256);
        return bytes;
    }();
    return pattern.mid(seed, length);
}

} // namespace

Files filesFrom(FuzzInput& input)
{
    Files files;
    for (std::size_t a = 0; a < 3; ++a) {
        const int form = input.byte();
        const int image = a == 0 ? 65536 : 131072;
        if (form % 8 == 0)
            files[a] = patterned(image - 1 + form / 8 % 3, form);
        else if (form % 8 == 1)
            files[a] = patterned((input.byte() | input.byte() << 8) * 3, form);
        else if (form % 8 < 6)
            files[a] = input.bytes();
    }
    return files;
}

bool isCheckable(const ExpectedProject& model)
{
    const std::int64_t most = 200000;
    std::int64_t total = 0;
    if (model.isAmbiguous)
        return false;
    for (std::size_t a = 0; a < 3; ++a) {
        for (const ExpectedBlock& block : model.blocks[a]) {
            total += std::int64_t(std::max(0, block.count)) * (a == 0 ? 20 : 1);
            if (std::abs(std::int64_t(block.count)) > most || block.fileOffset > most)
                return false;
        }
    }
    return total <= most;
}
