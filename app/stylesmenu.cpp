#include "app/stylesmenu.h"

#include "app/actions.h"
#include "app/settings.h"
#include "app/shell.h"

#include <QApplication>
#include <QSignalMapper>
#include <QStringList>
#include <QStyle>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString styleKey = u"/qt/style"_s;

void applyStyle(const QString &name)
{
    if (QStyle *style = QStyleFactory::create(name))
        QApplication::setStyle(style);
}

} // namespace

struct StylesMenu::Private
{
    static StylesMenu *self;

    QStringList styles;
};

StylesMenu *StylesMenu::Private::self = nullptr;

StylesMenu::StylesMenu() : QObject(Shell::self()), d(std::make_unique<Private>())
{}

StylesMenu::~StylesMenu()
{
    Private::self = nullptr;
}

StylesMenu *StylesMenu::self()
{
    if (!Private::self)
        Private::self = new StylesMenu;
    return Private::self;
}

void StylesMenu::initStylesMenu()
{
    d->styles = QStyleFactory::keys();
    d->styles.sort();
    bool isChosen = false;
    QString current = Settings::readFull(styleKey, QString(), &isChosen);
    if (!isChosen) {
        applyStyle(u"Windows"_s);
        // The name of a class is no style's name: none is checked.
        current = QString::fromLatin1(QApplication::style()->metaObject()->className());
    }
    ActionGroup *group = Shell::self()->actionGroup(u"menu/Options/Std/Select &style"_s);
    group->setExclusive(true);
    group->setUsesDropDown(true);
    auto *mapper = new QSignalMapper(this);
    connect(mapper, &QSignalMapper::mappedInt, this, &StylesMenu::setStyle);
    for (int i = 0; i < d->styles.size(); ++i) {
        const QString &name = d->styles.at(i);
        Action *action =
            Actions::createAction(name, u"StylesMenu/"_s + name, 0, mapper, SLOT(map()));
        group->add(action);
        mapper->setMapping(action, i);
        action->setCheckable(true);
        if (name == current) {
            action->setChecked(true);
            setStyle(i);
        }
    }
}

void StylesMenu::setStyle(int id)
{
    Settings::writeFull(styleKey, d->styles.at(id));
    applyStyle(d->styles.at(id));
}

} // namespace vesk
