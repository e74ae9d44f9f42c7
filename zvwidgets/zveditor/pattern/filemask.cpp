#include "zvwidgets/zveditor/pattern/filemask.h"

#include <QStringView>

#include <algorithm>
#include <optional>

namespace zvwidgets {

namespace {

/// Length of the set at the start of \a mask, brackets included; 0 if it is not closed.
qsizetype setLength(QStringView mask)
{
    // A closing bracket that comes first belongs to the set.
    const qsizetype first = mask.startsWith(u"[^") ? 3 : 2;
    return mask.indexOf(u']', first) + 1;
}

bool setContains(QStringView inner, QChar ch)
{
    const bool others = inner.startsWith(u'^');
    if (others)
        inner = inner.mid(1);
    bool found = false;
    for (qsizetype i = 0; i < inner.size(); ++i) {
        const bool isRange = i + 2 < inner.size() && inner[i + 1] == u'-';
        const QChar last = isRange ? inner[i + 2] : inner[i];
        found = found || (inner[i] <= ch && ch <= last);
        i += isRange ? 2 : 0;
    }
    return found != others;
}

/// Length of the part of \a mask that takes \a ch, 0 if it does not.
qsizetype takesUnit(QStringView mask, QChar ch)
{
    if (mask.isEmpty())
        return 0;
    if (mask[0] == u'[') {
        const qsizetype length = setLength(mask);
        if (length > 0)
            return setContains(mask.mid(1, length - 2), ch) ? length : 0;
    }
    return mask[0] == u'?' || mask[0] == ch ? 1 : 0;
}

bool matchesMask(QStringView mask, QStringView name)
{
    qsizetype m = 0;
    qsizetype n = 0;
    qsizetype afterStar = -1; ///< in the mask; going back to the last star is enough
    qsizetype starEnd = 0;    ///< in the name
    while (n < name.size()) {
        if (m < mask.size() && mask[m] == u'*') {
            afterStar = ++m;
            starEnd = n;
        } else if (const qsizetype taken = takesUnit(mask.mid(m), name[n])) {
            m += taken;
            ++n;
        } else if (afterStar >= 0) {
            m = afterStar;
            n = ++starEnd;
        } else {
            return false;
        }
    }
    while (m < mask.size() && mask[m] == u'*')
        ++m;
    return m == mask.size();
}

} // namespace

QStringList splitFileMasks(const QString &masks)
{
    const QChar separator = masks.contains(u';') ? u';' : u' ';
    QStringList result;
    for (const QString &mask : masks.split(separator)) {
        const QString trimmed = mask.trimmed();
        if (!trimmed.isEmpty())
            result.append(trimmed);
    }
    return result;
}

bool matchesFileMasks(const QString &masks, const QString &fileName)
{
    const QStringList list = splitFileMasks(masks);
    return std::any_of(list.begin(), list.end(),
                       [&fileName](const QString &mask) { return matchesMask(mask, fileName); });
}

} // namespace zvwidgets
