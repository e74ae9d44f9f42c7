#pragma once

#include <QString>
#include <QStringView>

namespace zvwidgets {

/// Looks for a fixed text, many times over: what is known of the text is
/// prepared once, and looking allocates nothing.
class LiteralSearch
{
public:
    LiteralSearch(const QString &text, Qt::CaseSensitivity cs);

    /// Column of the first match that begins at or after \a from, -1 if there is
    /// none. An empty text is never found.
    qsizetype indexIn(QStringView line, qsizetype from) const;
    qsizetype length() const { return needle.size(); }

private:
    /// The characters equal to one of the needle, with the last one repeated.
    struct Alternatives
    {
        char16_t units[3];
    };
    static bool alternativesOf(QChar c, Alternatives *out);
    bool matchesAt(const QChar *place) const;
    qsizetype scan(QStringView line, qsizetype from) const;

    QString needle;
    Qt::CaseSensitivity sensitivity;
    /// First and last character of the needle are few enough to be compared
    /// directly.
    bool direct = false;
    Alternatives first{};
    Alternatives last{};
};

} // namespace zvwidgets
