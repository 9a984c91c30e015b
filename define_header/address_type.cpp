// Converts address types between text and code.
// SPDX-License-Identifier: MIT
#include "define_header/address_type.h"

#include <QtCore/QString>

namespace {

struct AddressType
{
    int code;
    const char* text;
};

const AddressType addressTypes[] = {{1, "Bit"}, {2, "Word"}, {4, "Double Word"}};

} // namespace

QString addressType2QString(int code)
{
    for (const AddressType& type : addressTypes)
        if (type.code == code)
            return QLatin1String(type.text);
    return QLatin1String("");
}

int addressType2Int(QString text)
{
    for (const AddressType& type : addressTypes)
        if (text == QLatin1String(type.text))
            return type.code;
    return -1;
}
