#pragma once

#include "app/components.h"
#include "app/settings.h"
#include "app/shell.h"
#include "tests/testing.h"

#include <QPointer>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <memory>

/// What the tests of the application start from: settings and files in a folder of
/// their own, and a window with editors when it is asked for.
class AppTest : public QObject
{
protected:
    /// Holds for one test function.
    static void failOnBadConnects()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    }

    void makeProfile()
    {
        dir = std::make_unique<QTemporaryDir>();
        QVERIFY(dir->isValid());
        vesk::Settings::setKeyPrefix(QStringLiteral("/vesk"));
        vesk::Settings::setFileName(path(QStringLiteral("vesk.ini")));
    }
    /// In a profile of its own if none was made.
    void makeShell()
    {
        if (!dir)
            makeProfile();
        components = std::make_unique<vesk::Components>();
        shell = components->shell();
        components->openArguments();
    }
    void dropShell()
    {
        components.reset();
        // The next one reads them from the file, as another run does.
        vesk::Settings::setFileName(path(QStringLiteral("vesk.ini")));
    }

    QString path(const QString &name) const { return dir->filePath(name); }
    QString write(const QString &name, const QByteArray &bytes = "text") const
    {
        return writeFile(path(name), bytes);
    }

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<vesk::Components> components;
    QPointer<vesk::Shell> shell;
};
