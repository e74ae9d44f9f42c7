#pragma once

#include "app/search/filesearch.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace vesk {

/// Searches files on threads of its own and gives their hits, as rows for the message
/// list, in the order of the files, whichever thread was done first.
class TreeSearch
{
public:
    struct Row
    {
        QString text;
        /// Counts from 1.
        int line;
        QString fileName;
    };
    /// Gives the next file to be searched; false if there are no more. Called from the
    /// threads, never twice at a time; \a goOn tells whether it shall.
    using NextFile = std::function<bool(QString *file, const FileSearch::GoOn &goOn)>;

    /// Begins at once.
    TreeSearch(const SearchQuery &query, NextFile nextFile);
    /// Stops what is going on.
    ~TreeSearch();

    /// Moves the next rows to the end of \a rows, after waiting for them for some ms,
    /// which may be in vain. False once \a rows stays empty for good.
    [[nodiscard]] bool take(QList<Row> *rows);
    /// The file that the next rows will be from; empty if that isn't known yet.
    QString currentFile() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
