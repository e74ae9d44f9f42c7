#pragma once

#include <QChar>
#include <QStringView>

#include <array>

namespace zvwidgets {

// What belongs to a word depends on who asks; the differences are meant.

constexpr std::array<bool, 128> asciiWordTable()
{
    std::array<bool, 128> table{};
    for (char c = '0'; c <= '9'; ++c)
        table[size_t(c)] = true;
    for (char c = 'a'; c <= 'z'; ++c)
        table[size_t(c)] = true;
    for (char c = 'A'; c <= 'Z'; ++c)
        table[size_t(c)] = true;
    table[size_t('_')] = true;
    return table;
}

/// Whole-word search: a letter or digit of ASCII, or "_". Other letters end a word, so
/// that a search finds what it always found.
inline bool isSearchWordCharacter(QChar c)
{
    static constexpr std::array<bool, 128> ascii = asciiWordTable();
    return c.unicode() < 128 && ascii[c.unicode()];
}

/// Completion and the word at the cursor: a letter, digit or mark of any script, or "_".
inline bool isWordCharacter(QChar c)
{
    return c.unicode() < 128 ? isSearchWordCharacter(c) : c.isLetterOrNumber() || c.isMark();
}

/// TextDocument::wordIn(), and with it the double click: also "$", with which names
/// begin in many languages.
inline bool isNameCharacter(QChar c)
{
    return isWordCharacter(c) || c == u'$';
}

/// Word moves of the cursor: "=" belongs to the word, so that "a=b" is passed in one
/// step.
inline bool isStepCharacter(QChar c)
{
    return isSearchWordCharacter(c) || c == u'=';
}

/// True if no word reaches over either end of the \a length units at \a column.
inline bool isWholeSearchWord(QStringView text, qsizetype column, qsizetype length)
{
    const qsizetype end = column + length;
    return (column == 0 || !isSearchWordCharacter(text[column - 1])) &&
           (end >= text.size() || !isSearchWordCharacter(text[end]));
}

} // namespace zvwidgets
