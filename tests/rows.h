#pragma once

#include <QTest>

#include <type_traits>

/// A text of a data row: a string, or a literal in UTF-8.
struct RowText
{
    RowText(const char *utf8) : text(QString::fromUtf8(utf8)) {}
    RowText(const QString &string) : text(string) {}

    QString text;
};

/// The rows of a data function. Made with the names of its columns, it adds a row at
/// every call: its claim, then a value for each column.
template <typename... Types>
class Rows
{
    template <typename>
    using Name = const char *;
    template <typename T>
    using Value = std::conditional_t<std::is_same_v<T, QString>, RowText, T>;

public:
    explicit Rows(Name<Types>... names) { (QTest::addColumn<Types>(names), ...); }

    void operator()(const char *claim, const Value<Types> &...values) const
    {
        [[maybe_unused]] QTestData &row = QTest::newRow(claim);
        ((row << plain(values)), ...);
    }

private:
    template <typename T>
    static const T &plain(const T &value)
    {
        return value;
    }
    static const QString &plain(const RowText &value) { return value.text; }
};
