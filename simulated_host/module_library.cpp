// Loads a model's shared library through its two entry points.
// SPDX-License-Identifier: MIT
#include "simulated_host/module_library.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <dlfcn.h>

namespace {

template <typename Function> Function entryPoint(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

} // namespace

ModuleLibrary::ModuleLibrary(const QString& path)
{
    // For a name without a slash the loader would search its own directories.
    const QString file = QFileInfo(path).absoluteFilePath();
    if (!QFileInfo(file).isFile()) {
        errorText = QStringLiteral("%1: no such module library; build it, or name another one").arg(path);
        return;
    }
    void* const library = dlopen(QFile::encodeName(file).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        errorText = QStringLiteral("%1: cannot be loaded as a module: %2")
                        .arg(path, QString::fromLocal8Bit(dlerror()));
        return;
    }
    create = entryPoint<decltype(create)>(library, "createModel");
    destroy = entryPoint<decltype(destroy)>(library, "deletModel");
    if (!isLoaded())
        errorText = QStringLiteral("%1: is not a module library: it does not export %2")
                        .arg(path, QLatin1String(create ? "deletModel" : "createModel"));
}

ModelPointer ModuleLibrary::createModel() const
{
    return ModelPointer(create ? create() : nullptr, destroy);
}
