#pragma once

#include <QString>
#include <QStringView>

#include <memory>

namespace vesk {

/// A regular expression in the dialect of the editor's own search, for texts
/// that are in no editor. An invalid one never matches.
class SearchPattern
{
public:
    SearchPattern();
    SearchPattern(const QString &pattern, Qt::CaseSensitivity sensitivity);
    ~SearchPattern();
    SearchPattern(SearchPattern &&other) noexcept;
    SearchPattern &operator=(SearchPattern &&other) noexcept;

    /// Where the first match at or after \a from stands, -1 if there is none.
    /// "^" is the start of \a text whatever \a from is.
    [[nodiscard]] qsizetype search(QStringView text, qsizetype from, qsizetype *length) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace vesk
