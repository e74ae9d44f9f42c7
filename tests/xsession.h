#pragma once

#include "tests/testing.h"

#include <QClipboard>
#include <QFile>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// The editor in a process of its own, driven from outside: keys and mouse come
/// from the X server, answers are read from the screen, the X selections and the
/// files. Everything lives in a folder that goes with this object.
class XSession
{
public:
    static constexpr int patience = 20000; // ms; a sanitizer on a busy machine

    XSession()
    {
        // The columns of a click are measured with it.
        font.fromString(QStringLiteral("DejaVu Sans Mono,11,-1,5,50,0,0,0,0,0"));
        configure(QStringLiteral("zveditor/Font"),
                  QStringLiteral("DejaVu Sans Mono,11,-1,5,50,0,0,0,0,0"));
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("VESK_SETTINGS"), settingsFile());
        environment.insert(QStringLiteral("HOME"), dir.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.remove(QStringLiteral("QTDIR"));
    }

    ~XSession() { kill(); }
    Q_DISABLE_COPY_MOVE(XSession)

    [[nodiscard]] QString path(const QString &name) const { return dir.filePath(name); }
    [[nodiscard]] QString settingsFile() const { return path(QStringLiteral("vesk.ini")); }

    QString write(const QString &name, const QByteArray &bytes) const
    {
        return writeFile(path(name), bytes);
    }

    void configure(const QString &key, const QVariant &value) const
    {
        QSettings(settingsFile(), QSettings::IniFormat).setValue(key, value);
    }
    [[nodiscard]] QVariant setting(const QString &key) const
    {
        return QSettings(settingsFile(), QSettings::IniFormat).value(key);
    }

    /// Starts the editor; true once its window takes keys. With \a launcher that
    /// program is started instead, and gets the editor's path behind its arguments.
    [[nodiscard]] bool start(const QStringList &arguments, const QStringList &launcher = {})
    {
        QStringList command = launcher;
        command += QStringLiteral(VESK_EXECUTABLE);
        command += arguments;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(dir.path());
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(command.takeFirst(), command);
        // The splash screen may be there before.
        return process.waitForStarted(patience) &&
               QTest::qWaitFor(
                   [this] {
                       const QString title = activeTitle();
                       return !isRunning() || title == QLatin1String("Vesk") ||
                              title.endsWith(QLatin1String(" - Vesk"));
                   },
                   patience) &&
               isRunning() && waitForKeys();
    }

    [[nodiscard]] bool isRunning() const { return process.state() == QProcess::Running; }

    /// True if the editor ends by itself without a crash.
    [[nodiscard]] bool waitForEnd()
    {
        const bool hasEnded =
            QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, patience);
        return hasEnded && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    void kill()
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.kill();
        process.waitForFinished(patience);
    }

    /// Presses \a names such as "ctrl+s" or "Return", separated by blanks.
    void keys(const QString &names) const
    {
        tool(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("1")} +
             names.split(u' ', Qt::SkipEmptyParts));
    }

    void type(const QString &text) const
    {
        tool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("1"), text});
    }

    void press(const QPoint &at, int button = 1) const
    {
        moveTo(at);
        tool({QStringLiteral("mousedown"), QString::number(button)});
    }

    void moveTo(const QPoint &at) const
    {
        tool({QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y())});
    }

    void release(int button = 1) const
    {
        tool({QStringLiteral("mouseup"), QString::number(button)});
    }

    void click(const QPoint &at, int button = 1, int times = 1) const
    {
        moveTo(at);
        tool({QStringLiteral("click"), QStringLiteral("--repeat"), QString::number(times),
              QStringLiteral("--delay"), QStringLiteral("20"), QString::number(button)});
    }

    /// In two steps, as a hand does: the first one starts the drag.
    void drag(const QPoint &from, const QPoint &to) const
    {
        press(from);
        moveTo((from + to) / 2);
        moveTo(to);
        release();
    }

    /// The title of the window that gets the keys: the server's own focus, not what
    /// the window manager says, which is late when a dialog closes.
    [[nodiscard]] static QString activeTitle()
    {
        return tool({QStringLiteral("getwindowfocus"), QStringLiteral("getwindowname")});
    }

    [[nodiscard]] static bool waitForTitle(const QString &title)
    {
        return QTest::qWaitFor([&] { return activeTitle() == title; }, patience);
    }

    /// Waits until the file named \a name is shown and takes keys.
    [[nodiscard]] static bool waitForFile(const QString &name)
    {
        return QTest::qWaitFor(
            [start = name + QStringLiteral(" : ")] { return activeTitle().startsWith(start); },
            patience);
    }

    /// What the window with the focus covers on the screen, without its frame.
    [[nodiscard]] static QRect windowRect()
    {
        const QString window = tool({QStringLiteral("getwindowfocus")});
        const QString info = run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), window});
        const auto number = [&info](const QString &name) {
            const QRegularExpression line(name + QStringLiteral(": *(-?\\d+)\n"));
            return line.match(info).captured(1).toInt();
        };
        return {number(QStringLiteral("Absolute upper-left X")),
                number(QStringLiteral("Absolute upper-left Y")), number(QStringLiteral("Width")),
                number(QStringLiteral("Height"))};
    }

    static void placeWindow(const QPoint &frame, const QSize &size)
    {
        tool({QStringLiteral("getwindowfocus"), QStringLiteral("windowmove"),
              QString::number(frame.x()), QString::number(frame.y()), QStringLiteral("windowsize"),
              QString::number(size.width()), QString::number(size.height())});
    }

    [[nodiscard]] static QImage screenshot()
    {
        return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    }

    /// Where the line with the cursor is painted, in screen coordinates: all its
    /// rows, from the left to the right edge of the text. Null if none is in sight.
    [[nodiscard]] static QRect currentLine() { return boundsOf(QColor(0xef, 0xef, 0xff)); }

    /// The smallest rectangle around all pixels of \a colour within \a area, by
    /// default the whole screen.
    [[nodiscard]] static QRect boundsOf(const QColor &colour, const QRect &area = {})
    {
        const QImage screen = screenshot().convertToFormat(QImage::Format_RGB32);
        const QRect searched = area.isNull() ? screen.rect() : area & screen.rect();
        QRect found;
        const auto isWanted = [colour = colour.rgb() & RGB_MASK](QRgb pixel) {
            return (pixel & RGB_MASK) == colour;
        };
        for (int y = searched.top(); y <= searched.bottom(); ++y) {
            const auto *const row = reinterpret_cast<const QRgb *>(screen.constScanLine(y));
            const auto *const end = row + searched.right() + 1;
            const auto *const first = std::find_if(row + searched.left(), end, isWanted);
            const auto *last = end;
            while (last > first && !isWanted(last[-1]))
                --last;
            if (last > first)
                found |= QRect(QPoint(int(first - row), y), QPoint(int(last - row) - 1, y));
        }
        return found;
    }

    /// The left half of the list below the lower splitter, without its frame: it
    /// stands white above the status line. Null if it is hidden.
    [[nodiscard]] static QRect messageList()
    {
        const QImage screen = screenshot();
        const QRect window = windowRect();
        // Where no row and no icon reaches.
        const int x = window.left() + window.width() * 3 / 4;
        const auto isWhite = [&](int y) { return screen.pixelColor(x, y) == Qt::white; };
        int bottom = window.bottom();
        int top = bottom + 1;
        // The frames of the status bar have white edges.
        do {
            bottom = top - 1;
            while (!isWhite(bottom) && bottom > window.top())
                --bottom;
            top = bottom;
            while (isWhite(top - 1) && top > window.top())
                --top;
        } while (bottom - top < 10 && top > window.top());
        // Below the rows; the left dock beside the list has greys of its own.
        int left = x;
        while (screen.pixelColor(left - 1, bottom) == Qt::white)
            --left;
        return {left, top, x - left, bottom - top + 1};
    }

    /// The pixel just right of the left edge of \a visualColumn in the line with
    /// the cursor.
    [[nodiscard]] QPoint pointInLine(int visualColumn) const
    {
        const QRect line = currentLine();
        const int shift = QFontMetrics(font).horizontalAdvance(QString(visualColumn, u' '));
        return {line.left() + 2 + shift + 2, line.top() + lineHeight() / 2};
    }

    /// The pixel in the middle of the folding margin, \a rows below the first row
    /// of the line with the cursor.
    [[nodiscard]] QPoint pointInFolds(int rows = 0) const
    {
        const QRect line = currentLine();
        return {line.left() - 6, line.top() + lineHeight() / 2 + rows * lineHeight()};
    }

    [[nodiscard]] int lineHeight() const { return QFontMetrics(font).height(); }

    /// What the copy command brings to another program; null if that takes too long.
    [[nodiscard]] QString copied() const
    {
        QClipboard *const clipboard = QGuiApplication::clipboard();
        clipboard->setText(QStringLiteral("not yet"));
        keys(QStringLiteral("ctrl+c"));
        const bool hasCome = QTest::qWaitFor([&] { return !clipboard->ownsClipboard(); }, patience);
        return hasCome ? clipboard->text() : QString();
    }

    /// Moves to the line with this number, which must not be empty, and waits
    /// until it is painted there.
    [[nodiscard]] bool goToLine(int line) const
    {
        const QString window = activeTitle();
        keys(QStringLiteral("ctrl+g"));
        if (!waitForTitle(QStringLiteral("Goto line...")))
            return false;
        keys(QStringLiteral("ctrl+a"));
        type(QString::number(line));
        keys(QStringLiteral("Return"));
        if (!waitForTitle(window))
            return false;
        // The answer to a later key comes when the command has been carried out.
        keys(QStringLiteral("shift+Right"));
        if (copied().isNull())
            return false;
        keys(QStringLiteral("Left"));
        return waitForPaint();
    }

    /// True once the line with the cursor has stopped moving.
    [[nodiscard]] static bool waitForPaint()
    {
        constexpr int samples = 4; // of about 50 ms each
        QRect last;
        int same = 0;
        return QTest::qWaitFor(
            [&] {
                const QRect now = currentLine();
                same = now == last && !now.isNull() ? same + 1 : 0;
                last = now;
                return same >= samples;
            },
            patience);
    }

    QTemporaryDir dir;
    QProcessEnvironment environment;
    QProcess process;
    QFont font;

private:
    /// A window may have the focus before its program knows.
    [[nodiscard]] static bool waitForKeys()
    {
        return QTest::qWaitFor([] { return !currentLine().isNull(); }, patience);
    }

    static QString tool(const QStringList &arguments)
    {
        return run(QStringLiteral("xdotool"), arguments);
    }

    static QString run(const QString &program, const QStringList &arguments)
    {
        QProcess child;
        child.start(program, arguments);
        if (!child.waitForFinished(patience))
            qFatal("%s does not run: %s", qPrintable(program), qPrintable(child.errorString()));
        return QString::fromUtf8(child.readAllStandardOutput()).trimmed();
    }
};

/// What the tests of the whole program start from.
class SessionTest : public QObject
{
protected:
    void makeSession() { session = std::make_unique<XSession>(); }

    /// Leaves a picture of a failure in the folder that VESK_TEST_PICTURES names.
    void dropSession()
    {
        const QString pictures = qEnvironmentVariable("VESK_TEST_PICTURES");
        if (QTest::currentTestFailed() && !pictures.isEmpty())
            XSession::screenshot().save(pictures + u'/' +
                                        QString::fromLatin1(QTest::currentTestFunction()) +
                                        QStringLiteral(".png"));
        session.reset();
    }

    std::unique_ptr<XSession> session;
};

/// Waits until the file holds exactly these bytes; shows the first line that does not.
#define COMPARE_FILE(path, expected)                                                               \
    QTRY_COMPARE_WITH_TIMEOUT(difference(readFile(path), expected), QString(), XSession::patience)
