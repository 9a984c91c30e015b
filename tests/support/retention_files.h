// Handles the three retention files together, as they are on the disk.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>

#include <array>
#include <optional>
#include <string>

/// The files of "LB", "LW", "RWI"; nothing for a missing one.
using Files = std::array<std::optional<QByteArray>, 3>;

/// Their paths below the fixed directory.
QString pathOfFile(std::size_t area);
/// Puts exactly these files into the fixed directory, which must exist.
void layFiles(const Files& files);
void layFile(std::size_t area, const std::optional<QByteArray>& file);
Files filesNow();
/// How a file differs from what it must be, for messages; empty when equal.
std::string fileDifference(std::size_t area, const std::optional<QByteArray>& file,
                           const std::optional<QByteArray>& must);
