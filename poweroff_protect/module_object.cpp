// Constructs and destroys the module object.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_fields.h"
#include "poweroff_protect/file_access.h"
#include "poweroff_protect/poweroff_protect.h"

#include <QtCore/QDir>

poweroff_protect::poweroff_protect()
{
    const QString path = QLatin1String(projectDirectory);
    const QDir directory(path);
    if (!directory.exists())
        directory.mkpath(path);
}

poweroff_protect::~poweroff_protect()
{
    for (const AreaFields& area : AreaFields::of(*this))
        if (area.file.is_open())
            area.file.close();
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

const char* poweroffProtectVersion()
{
    return POWEROFF_PROTECT_VERSION;
}
