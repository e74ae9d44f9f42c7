#pragma once

#include <QByteArrayView>
#include <QStringConverter>

namespace zvwidgets {

/// The bytes that name \a encoding at the start of a file; empty if it has none.
inline QByteArrayView byteOrderMark(QStringConverter::Encoding encoding)
{
    switch (encoding) {
    case QStringConverter::Utf8:
        return {"\xEF\xBB\xBF", 3};
    case QStringConverter::Utf16LE:
        return {"\xFF\xFE", 2};
    case QStringConverter::Utf16BE:
        return {"\xFE\xFF", 2};
    case QStringConverter::Utf32LE:
        return {"\xFF\xFE\0\0", 4};
    case QStringConverter::Utf32BE:
        return {"\0\0\xFE\xFF", 4};
    case QStringConverter::Utf16:
    case QStringConverter::Utf32:
    case QStringConverter::Latin1:
    case QStringConverter::System:
        break;
    }
    return {};
}

/// \a encoding with everything settled that would depend on this machine.
inline QStringConverter::Encoding withByteOrder(QStringConverter::Encoding encoding)
{
    switch (encoding) {
    case QStringConverter::System:
        return QStringConverter::Utf8;
    case QStringConverter::Utf16:
        return QStringConverter::Utf16LE;
    case QStringConverter::Utf32:
        return QStringConverter::Utf32LE;
    case QStringConverter::Utf8:
    case QStringConverter::Utf16LE:
    case QStringConverter::Utf16BE:
    case QStringConverter::Utf32LE:
    case QStringConverter::Utf32BE:
    case QStringConverter::Latin1:
        break;
    }
    return encoding;
}

} // namespace zvwidgets
