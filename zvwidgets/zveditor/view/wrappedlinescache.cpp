#include "zvwidgets/zveditor/view/wrappedlinescache.h"

#include <utility>

namespace zvwidgets {

namespace {

constexpr qsizetype mostLines = 2048;
constexpr qsizetype mostCharacters = 4 * 1024 * 1024;

} // namespace

void WrappedLinesCache::setWidth(int newWidth)
{
    if (newWidth != width)
        clear();
    width = newWidth;
}

void WrappedLinesCache::setWrapMode(bool newWrap, wrapMode newMode)
{
    if (newWrap != wrap || newMode != mode)
        clear();
    wrap = newWrap;
    mode = newMode;
}

void WrappedLinesCache::clear()
{
    lines.clear();
    characters = 0;
}

const WrappedLinesCache::Ends *WrappedLinesCache::find(const QString &text) const
{
    if (text.size() > longestText)
        return nullptr;
    const auto found = lines.constFind(text);
    return found == lines.constEnd() ? nullptr : &*found;
}

const WrappedLinesCache::Ends *WrappedLinesCache::insert(const QString &text, Ends ends)
{
    if (text.size() > longestText) {
        unkept = std::move(ends);
        return &unkept;
    }
    if (lines.size() > mostLines || characters > mostCharacters)
        clear();
    characters += text.size();
    // A line may share its text with the block it was read in, so the key needs
    // a copy of its own.
    return &*lines.insert(QString(text.constData(), text.size()), std::move(ends));
}

} // namespace zvwidgets
