#pragma once

#include <QList>

namespace zvwidgets {

/// A history of places, as that of a browser: going somewhere drops what lay ahead.
/// A place that was left may be changed through the reference that is returned, which
/// is good until the next go().
template <typename T>
class Navigator
{
public:
    /// Appends \a place after the present one and makes it the present one.
    T &go(const T &place)
    {
        if (isForwardEnabled())
            urls.erase(urls.begin() + at + 1, urls.end());
        urls.append(place);
        at = urls.size() - 1;
        return urls[at];
    }

    bool isBackEnabled() const { return at > 0; }
    bool isForwardEnabled() const { return at + 1 < urls.size(); }

    // These need a place to be there: go() was called.

    /// The present place.
    T &url() { return urls[at]; }
    /// The place before, or the present one if it is the first.
    T &back()
    {
        at -= isBackEnabled() ? 1 : 0;
        return url();
    }
    T &forward()
    {
        at += isForwardEnabled() ? 1 : 0;
        return url();
    }

    void setHome(const T &place) { home_url = place; }
    /// Goes to the place of setHome().
    T &home() { return go(T(home_url)); }

private:
    T home_url{};
    QList<T> urls;
    /// An index, because an iterator would not outlive an append.
    qsizetype at = -1;
};

} // namespace zvwidgets
