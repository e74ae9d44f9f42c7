#pragma once

#include <QPixmap>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <memory>

namespace zvwidgets {

/// A pixmap for one row of \a widget, \a height logical pixels high, in the pixel ratio
/// of the widget's screen. Never empty, so that a painter can always begin on it.
inline std::unique_ptr<QPixmap> makeRowBuffer(const QWidget &widget, int height)
{
    const double ratio = widget.devicePixelRatioF();
    const auto inPixels = [ratio](int length) {
        return std::max(1, int(std::ceil(length * ratio)));
    };
    auto buffer = std::make_unique<QPixmap>(inPixels(widget.width()), inPixels(height));
    buffer->setDevicePixelRatio(ratio);
    return buffer;
}

} // namespace zvwidgets
