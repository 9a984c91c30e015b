// Birth and death of the module object, and the library's entry points.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/project_directory.h"
#include "poweroff_protect/retention_area.h"

#include <QtCore/QDir>

poweroff_protect::poweroff_protect()
{
    const QDir directory(projectDirectory());
    if (!directory.exists())
        directory.mkpath(projectDirectory());
}

poweroff_protect::~poweroff_protect()
{
    for (const RetentionArea& area : RetentionArea::all) {
        std::fstream& file = this->*area.file;
        if (file.is_open())
            file.close();
    }
}

void poweroff_protect::rebuildExtModelAddr() {}

ExtendFuncModelBase* createModel()
{
    return new poweroff_protect;
}

void deletModel(ExtendFuncModelBase* model)
{
    delete model;
}
