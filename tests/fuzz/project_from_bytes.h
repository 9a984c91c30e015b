// Builds project trees from a fuzzer's bytes.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"
#include "tests/fuzz/fuzz_input.h"

#include <memory>

/// Treats the input as a list of building steps: open an object, close it, set a number or a text, or append
/// a whole retention entry. Names and texts are often those that the module looks for. Trees have at most
/// some thousand objects.
std::unique_ptr<object> projectFromBytes(FuzzInput& input);
