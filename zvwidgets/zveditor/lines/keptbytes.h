#pragma once

#include <QByteArrayView>
#include <QStringView>

#include <array>

class QIODevice;

namespace zvwidgets {

/// UTF-8 that holds bytes which are no part of a character, each of which becomes one
/// code unit: U+DC00 plus the byte. Such a unit stands alone, as the second half of a
/// surrogate pair without a first one, so that no character can be mistaken for it.
constexpr char16_t keptByteBase = 0xDC00;

/// True if the unit at \a index of \a text stands for a byte.
inline bool isKeptByte(QStringView text, qsizetype index)
{
    const char16_t unit = text.at(index).unicode();
    return unit >= keptByteBase + 0x80 && unit <= keptByteBase + 0xFF &&
           (index == 0 || !text.at(index - 1).isHighSurrogate());
}

/// Decodes UTF-8 piece by piece and keeps the bytes that don't decode.
class KeepingDecoder
{
public:
    /// Writes to \a out, which has room for three more units than \a bytes has bytes,
    /// and returns the end of what was written.
    QChar *appendToBuffer(QChar *out, QByteArrayView bytes);
    /// To be called once all bytes were given; writes up to three units.
    QChar *finish(QChar *out);

private:
    QChar *appendPending(QChar *out, bool isLast);

    /// The start of a character whose end is yet to come.
    std::array<uchar, 4> pending{};
    int pendingCount = 0;
};

/// True if a valid sequence of several bytes follows anywhere in \a device, which is
/// read from its present place.
bool hasMultiByteCharacter(QIODevice &device);

} // namespace zvwidgets
