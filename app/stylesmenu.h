#pragma once

#include <QObject>

#include <memory>

namespace vesk {

/// Offers the toolkit's widget styles as a submenu of the options, one of them
/// checked. The choice is written at once, under a key without the program's
/// prefix.
class StylesMenu : public QObject
{
    Q_OBJECT
public:
    ~StylesMenu() override;

    /// Made at the first call, as a child of the main window.
    static StylesMenu *self();

    /// Applies the chosen style and makes the submenu. Without a choice the style
    /// is "Windows", so that a first start looks the same everywhere, and none is
    /// checked.
    void initStylesMenu();

public slots:
    /// Applies and stores style \a id, an index into the sorted names of styles.
    void setStyle(int id);

private:
    struct Private;

    StylesMenu();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
