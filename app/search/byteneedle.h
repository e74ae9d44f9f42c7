#pragma once

#include <QByteArray>

namespace vesk {

/// A text in bytes that is looked for in bytes; of a long one only the start.
class ByteNeedle
{
public:
    enum class Case
    {
        Sensitive,
        Ignored ///< that of ASCII letters
    };

    ByteNeedle() = default;
    explicit ByteNeedle(const QByteArray &text, Case letters = Case::Sensitive);

    bool isEmpty() const { return needle.isEmpty(); }
    qsizetype size() const { return needle.size(); }
    /// Where it begins first in \a data, null if nowhere. It must not be empty.
    const char *findIn(const char *data, qsizetype size) const;

private:
    bool isAt(const char *place) const;

    QByteArray needle; ///< in lower case if case is ignored
    bool ignoresCase = false;
    /// Places in the needle of the bytes that are met least.
    qsizetype rarest = 0;
    qsizetype second = 0;
};

} // namespace vesk
