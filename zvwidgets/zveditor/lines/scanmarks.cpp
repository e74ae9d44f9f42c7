#include "zvwidgets/zveditor/lines/scanmarks.h"

#include <algorithm>

namespace zvwidgets {

void ScanMarks::textChanged(int column, int removed, int inserted)
{
    if (scanner == 0)
        return;
    prefix = std::min(prefix, column);
    suffix = std::min(suffix, length - column - removed);
    length += inserted - removed;
}

ScanMarks::Place ScanMarks::begin(quint64 scannerId, int ctx, int size)
{
    if (scanner != scannerId || length != size)
        clear();
    settled = scanner != 0 && ctx == startCtx && scannedLength == length && prefix == length;
    if (settled)
        return {};
    const int shift = length - scannedLength;
    const auto firstUnchanged = std::find_if(
        places.begin(), places.end(),
        [from = scannedLength - suffix](const Place &place) { return place.at >= from; });
    behind.assign(firstUnchanged, places.end());
    for (Place &place : behind) {
        place.at += shift;
        if (place.reach != wholeText)
            place.reach += shift;
    }
    firstBehind = 0;
    const auto firstVoid =
        ctx != startCtx ? places.begin()
                        : std::find_if(places.begin(), places.end(),
                                       [this](const Place &place) { return place.reach > prefix; });
    places.erase(firstVoid, places.end());
    scanner = scannerId;
    startCtx = ctx;
    length = size;
    Place start;
    start.ctx = ctx;
    start.rule = -1;
    if (!places.empty())
        start = places.back();
    findNext(start.at);
    return start;
}

void ScanMarks::findNext(int at)
{
    next = (places.empty() ? 0 : places.back().at) + step;
    while (firstBehind < behind.size() && behind[firstBehind].at <= at)
        ++firstBehind;
    if (firstBehind < behind.size())
        next = std::min(next, behind[firstBehind].at);
}

bool ScanMarks::pass(const Place &place, qint64 budget)
{
    while (firstBehind < behind.size() && behind[firstBehind].at < place.at)
        ++firstBehind;
    if (firstBehind < behind.size() && behind[firstBehind].at == place.at) {
        const qint64 more = place.spent - behind[firstBehind].spent;
        if (place.goesOnAs(behind[firstBehind]) && spentAtEnd + more < budget) {
            // What the way here depends on has to be known of the first place behind it.
            Place &met = behind[firstBehind];
            met.reach = std::max(met.reach, place.reach);
            for (; firstBehind < behind.size(); ++firstBehind) {
                places.push_back(behind[firstBehind]);
                places.back().spent += more;
            }
            finish(endCtx, spentAtEnd + more, budget);
            return true;
        }
    }
    if (place.at - (places.empty() ? 0 : places.back().at) >= step)
        places.push_back(place);
    findNext(place.at);
    return false;
}

void ScanMarks::finish(int ctx, qint64 spent, qint64 budget)
{
    behind.clear();
    settled = true;
    // Where the work ran out depends on all that went before.
    if (spent >= budget) {
        clear();
        return;
    }
    endCtx = ctx;
    spentAtEnd = spent;
    scannedLength = length;
    prefix = length;
    suffix = length;
}

} // namespace zvwidgets
