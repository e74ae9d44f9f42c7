#pragma once

#include <QColor>
#include <QComboBox>
#include <QMap>

namespace vesk {

/// Picks a colour: none, a custom one from the colour dialog, or one of a row of
/// standard colours that are known by name.
class ColorCombo : public QComboBox
{
    Q_OBJECT
public:
    explicit ColorCombo(QWidget *parent = nullptr, const QString &name = QString());

    /// An invalid colour selects "none".
    void setColor(const QColor &color);
    /// Invalid while "none" is selected.
    QColor color() const;
    bool hasColor() const;
    /// A standard name or any other the toolkit knows; one that is neither
    /// selects "none".
    void setColorName(const QString &name);
    /// The standard name if there is one, else "#rrggbb"; empty without a colour.
    QString colorName() const;

signals:
    /// The user chose an entry. \a color is the last colour that there was, also after
    /// "none": ask hasColor().
    void activated(const QColor &color);

private:
    void createStandardPalette();
    void updateColors();
    void slotActivated(int index);
    void paintCustomSwatch();

    QColor customColor = Qt::white;
    QColor currentColor = Qt::white;
    bool hascolor = false;
    QMap<int, QString> pos2color;
    QMap<QString, int> color2pos;
};

} // namespace vesk
