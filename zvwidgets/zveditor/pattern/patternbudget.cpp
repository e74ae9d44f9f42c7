#include "zvwidgets/zveditor/pattern/patternbudget.h"

#include <algorithm>
#include <utility>

namespace zvwidgets {

PatternBudget::PatternBudget(qint64 steps, GoOn goOn) : left(steps), wish(std::move(goOn))
{
    setPause();
}

void PatternBudget::setPause()
{
    pause = wish ? std::max<qint64>(0, left - lookDistance) : 0;
}

bool PatternBudget::look()
{
    if (left > 0 && wish && !wish()) {
        stopped = true;
        left = 0;
    }
    setPause();
    return left > 0;
}

} // namespace zvwidgets
