// Loads a model's shared library.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

class ExtendFuncModelBase;

/// A model object, returned to its library when it goes out of scope.
using ModelPointer = std::unique_ptr<ExtendFuncModelBase, std::function<void(ExtendFuncModelBase*)>>;

/// A loaded library; it stays loaded until the process ends.
class ModuleLibrary
{
public:
    /// Loads the library. On failure isLoaded() is false and error() says what is wrong with the file.
    explicit ModuleLibrary(const QString& path);

    /// Whether createModel() works.
    bool isLoaded() const { return create != nullptr && destroy != nullptr; }
    const QString& error() const { return errorText; } ///< empty when the library is loaded

    /// Creates a model object; null when nothing is loaded.
    ModelPointer createModel() const;

private:
    ExtendFuncModelBase* (*create)() = nullptr;
    void (*destroy)(ExtendFuncModelBase*) = nullptr;
    QString errorText;
};
