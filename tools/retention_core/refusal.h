// Defines what is thrown when an input or an output is refused.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <stdexcept>

/// The message names the input or output, what is wrong with it and what to do.
class Refusal : public std::runtime_error
{
public:
    explicit Refusal(const QString& message) : std::runtime_error(message.toStdString()) {}

    QString message() const { return QString::fromUtf8(what()); }
};
