// Runs the minimal runtime, linked with the module.
// SPDX-License-Identifier: MIT
#include "runtime.h"

int main()
{
    ExtendFuncModelBase* const model = createModel();
    const int status = countOnce(model);
    deletModel(model);
    return status;
}
