#include "app/editors/editors.h"
#include "app/messages/messageoutput.h"
#include "app/search/searchmanager.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QApplication>
#include <QFont>
#include <QSplashScreen>

#include <memory>

using namespace vesk;

namespace {

/// The font of the settings, the default one if there is none that can be read.
QFont applicationFont()
{
    QFont font;
    const QString stored = Settings::read(QStringLiteral("/fonts/Application"));
    if (!stored.isEmpty() && !font.fromString(stored))
        return QFont();
    return font;
}

int run()
{
    const QFont font = applicationFont();
    QApplication::setFont(font);
    auto splash = std::make_unique<QSplashScreen>(Utils::icon(QStringLiteral("vesk_splashscreen")),
                                                  Qt::WindowFlags());
    splash->setWindowTitle(QCoreApplication::translate("main", "Loading..."));
    splash->show();

    Shell shell(nullptr, QStringLiteral("vesk::Shell"));
    // A file of the command line has named the window already.
    if (shell.windowTitle().isEmpty())
        shell.setWindowTitle(QStringLiteral("Vesk"));
    shell.setWindowIcon(Utils::icon(QStringLiteral("vesk-128")));
    shell.setFont(font);
    // Each registers itself with the shell; the order of the groups, not this
    // one, decides what stands where.
    Editors::self();
    MessageOutput::self();
    SearchManager::self();
    shell.rebuildUI();
    shell.show();
    splash->finish(&shell);
    splash.reset();
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    // Files written as XML must not differ from run to run.
    QHashSeed::setDeterministicGlobalSeed();
    QApplication application(argc, argv);
    // A window without a title of its own is shown under this name.
    QCoreApplication::setApplicationName(QStringLiteral("Vesk"));
    // The shell leaves by itself once every text is dealt with.
    QApplication::setQuitOnLastWindowClosed(false);
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    const int result = run();
    // The editors store their folds while the shell goes.
    Settings::forceWrite();
    return result;
}
