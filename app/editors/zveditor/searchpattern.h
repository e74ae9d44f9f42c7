#pragma once

#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

namespace vesk {

/// A regular expression in the dialect of the editor's own search, for texts
/// that are in no editor. An invalid one never matches.
class SearchPattern
{
public:
    /// Asked several times in 50 ms while an expression keeps the matcher busy; after a
    /// false nothing is found any more, in any text.
    using GoOn = std::function<bool()>;

    SearchPattern();
    SearchPattern(const QString &pattern, Qt::CaseSensitivity sensitivity, GoOn goOn = {});
    ~SearchPattern();
    SearchPattern(SearchPattern &&other) noexcept;
    SearchPattern &operator=(SearchPattern &&other) noexcept;

    /// What is searched from now on; it must live and stay as it is meanwhile.
    void setText(QStringView text);
    /// Where the first match stands that begins at or after \a from and in front of
    /// \a limit, -1 if there is none; \a length receives its length. "^" is the
    /// start of the text whatever \a from is. Some expressions pass over \a limit.
    [[nodiscard]] qsizetype search(qsizetype from, qsizetype limit, qsizetype *length);

    /// True once GoOn was false.
    bool wasStopped() const;

    /// A text in ASCII that every match holds; empty if none is known. If case does
    /// not count it is in lower case, and holds for ASCII texts only.
    QString requiredText() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// True if no word, in the sense of the editor's own search, reaches over either end of
/// the \a length units at \a column.
bool isWholeWord(QStringView text, qsizetype column, qsizetype length);

} // namespace vesk
