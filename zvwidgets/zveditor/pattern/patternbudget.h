#pragma once

#include <QtGlobal>

#include <functional>
#include <limits>

namespace zvwidgets {

/// What one operation may spend on expressions, over all its texts, in steps of the
/// matchers: a character passed, a place gone back to. The count depends on the
/// expression and the texts alone, so that an operation ends where it ended before.
class PatternBudget
{
public:
    /// Asked again and again while steps are spent; false ends the operation.
    using GoOn = std::function<bool()>;

    static constexpr qint64 unlimited = std::numeric_limits<qint64>::max();
    /// Steps from one call of GoOn to the next: a few milliseconds.
    static constexpr qint64 lookDistance = 128 * 1024;

    explicit PatternBudget(qint64 steps, GoOn goOn = {});

    /// False once nothing is left; what was going on has no result then.
    bool spend(qint64 steps)
    {
        left -= steps;
        return left > pause || look();
    }
    qint64 remaining() const { return left; }
    bool isSpent() const { return left <= 0; }
    /// The steps ended because GoOn said so.
    bool wasStopped() const { return stopped; }

private:
    bool look();
    void setPause();

    qint64 left;
    qint64 pause = 0; ///< look() is due when no more than this is left
    GoOn wish;
    bool stopped = false;
};

} // namespace zvwidgets
