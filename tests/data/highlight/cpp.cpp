/* Ring buffer of log records.
 * A quote in a comment doesn't open anything: "neither does this one.
 * // nor this

 */
#ifndef LOGRING_H
#define LOGRING_H
#include <vector>
#include <sys/types.h>   // path, then a comment
#include "log/record.h"
#  include "log/sink.h" /* comment behind a directive */
#if defined(__GNUC__) && (__GNUC__ < 12) /* until it
  is 12 */
#define OLD_COMPILER 1
#endif /* __GNUC__ */
#define CHECK(cond, text) \
    do { /* once */ \
        if (!(cond)) \
            fail("check \"" #cond "\" failed", text); \
    } while (0)
#define QUOTE '"'
#define APOSTROPHE '\''  // one quote
#error Don't build this "half
#

namespace logging {

class Sink;

enum class Level : unsigned char { debug, info = 010, warning = 0x1F, error = 0XffUL };

template <typename Record, std::size_t capacity = 1'024>
class Ring final : public Base<Record>
{
    Q_OBJECT
public:
    explicit Ring(Sink *sink = nullptr) : sink(sink) {}
    Ring(const Ring &) = delete;
    ~Ring() override { flush(); }

    // A backslash at the end \\ is text
    void put(const Record &record) noexcept(false)
    {
        const char open = '{', slash = '/', star = '*', quote = '"', other = '\'';
        const wchar_t *path = L"C:\\temp\\";
        const char *url = "http://example.org/*.html"; // an address
        const char *mixed = "it's /* no comment */ \x41\101\n";
        const char *split = "begins here, \
goes on /* as text */ and \
ends here"; int after = 1;
        const char *joined = "one" "two" /* between */ "three";
        const char *empty = "";
        if (record.size > 1'000'000 && record.level != Level::debug)
            buffer[head++ % capacity] = record; /* inline */ else drop(record);
        emit added(*sink, &record);
    }

    double load() const
    {
        const double part = .5 + 1. + 1.5e-3 + 2E10 - 3.25f + 0.0L;
        const auto mask = 0xDEAD'BEEFu | 0777 | 0b1011 | 42ULL | 0;
        return part * static_cast<double>(mask) / (head ? head : 1);
    }

    bool wraps = false, full = true;
    int table[3][2] = {{1, 2}, {3, 4}, {5, 6}};
    char multi = 'ab12', escape = '\u00e9', digit = '7', tab = '\t', zero = '\0';

private slots:
    void unclosed()
    {
        puts("never closed);
        int next = 1; // the next line is code again
        puts("closed \\");  // an escaped backslash
        puts("
        int again = 2;
        char broken = 'x;
        int still = 3;
    }

signals:
    void added(Sink &sink, const Record *record);

private:
    using Store = std::vector<Record>;
    Store buffer{};
    mutable size_t head{0};
    Sink *const sink;
    //* not an opening
    /**/ int between; /***/ int stars; /* // */ int slashes;
    union { float f; uint32_t u; } bits;
};

inline Level &operator<<(Level &level, int n) { return level = Level(int(level) << n); }

#define STR(x) #x \

int afterContinuedEmptyLine;

#ifdef WITH_MACROS
#  define OPEN "text with // and /* in it" // comment
#  define VALUE(a, b) ((a) <= (b) ? a##b : 1'5) /* first */ + /* second */ 2
#else
#  pragma once
#endif
const char *raw = R"(a "b" // c)", *wide = u8R"(\)"; static_assert(alignof(int) == 0x1.8p1);

} // namespace logging

#endif // LOGRING_H
/* a comment that is never closed
   "still a comment
   int x = 1;
