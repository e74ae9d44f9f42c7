#include "app/components.h"
#include "app/editors/editors.h"
#include "app/project/project.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QFont>
#include <QFontDatabase>
#include <QImageReader>
#include <QSplashScreen>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <memory>

using namespace vesk;

namespace {

constexpr QLatin1String fontKey("/fonts/Application");
// How long a window may take to come up, in ms.
constexpr int splashPatience = 100;
constexpr int windowPatience = 1000;

/// The font of the settings, the default one if there is none that can be read.
QFont applicationFont()
{
    QFont font;
    const QString stored = Settings::read(fontKey);
    if (!stored.isEmpty() && !font.fromString(stored))
        return QFont();
    return font;
}

/// Makes the toolkit list the installed fonts and load its image formats while the
/// splash screen comes up, most of which is waiting. Code that needs them earlier
/// waits or loads them itself.
class ToolkitPreparation
{
public:
    ToolkitPreparation() { thread->start(); }
    ~ToolkitPreparation() { thread->wait(); }
    Q_DISABLE_COPY_MOVE(ToolkitPreparation)

private:
    const std::unique_ptr<QThread> thread{QThread::create([] {
        QFontDatabase::hasFamily(QString());
        QImageReader::supportedImageFormats();
    })};
};

/// Runs events until \a window is on the screen, which paints it too; at most for
/// \a patience ms. QSplashScreen waits as well, but sleeps between its looks.
void waitUntilShown(const QWindow *window, int patience)
{
    const QDeadlineTimer limit(patience);
    // Sees to it that something happens before the limit.
    QTimer wake;
    wake.start(patience / 10);
    while (!window->isExposed() && !limit.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents |
                                        QEventLoop::ExcludeUserInputEvents);
}

int run()
{
    const ToolkitPreparation preparation;
    const QFont font = applicationFont();
    QApplication::setFont(font);
    auto splash = std::make_unique<QSplashScreen>(Utils::icon(QStringLiteral("vesk_splashscreen")),
                                                  Qt::WindowFlags());
    splash->setWindowTitle(QCoreApplication::translate("main", "Loading..."));
    splash->show();

    Components components;
    Shell &shell = *components.shell();
    // Files may take long and run no events: without a look at the screen before,
    // the splash would stay an empty frame all the while. It has come up meanwhile.
    waitUntilShown(splash->windowHandle(), splashPatience);
    components.openArguments();
    // A file of the command line has named the window already.
    if (shell.windowTitle().isEmpty())
        shell.setWindowTitle(QStringLiteral("Vesk"));
    shell.setWindowIcon(Utils::icon(QStringLiteral("vesk-128")));
    shell.setFont(font);
    components.makePanels();
    shell.rebuildUI();
    shell.show();
    waitUntilShown(shell.windowHandle(), windowPatience);
    splash->finish(&shell);
    splash.reset();
    QTimer::singleShot(0, Editors::self(), &Editors::settleInterruptedSaves);
    QTimer::singleShot(0, Project::self(), &Project::tellOfStart);
    // The window may have been closed before exec(); then there is no loop to quit.
    return shell.isLeaving() ? 0 : QApplication::exec();
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
