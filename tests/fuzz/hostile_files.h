// Makes retention files of any length and content from a fuzzer's bytes.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/fuzz/fuzz_input.h"
#include "tests/support/expected_project.h"
#include "tests/support/retention_files.h"

/// For each area: no file, one of a few bytes, one of any length, or one as whole-area mode leaves it.
Files filesFrom(FuzzInput& input);

/// Whether memory and files stay small (no block lies or reaches far out) and the result is specified.
bool isCheckable(const ExpectedProject& project);
