#pragma once

#include <QLatin1String>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QToolButton;

namespace vesk {

/// The two scripts with their arguments.
struct Scripts
{
    QString make;
    QString makeArgs;
    QString run;
    QString runArgs;

    /// Those of the settings.
    static Scripts global();
    void storeGlobal() const;
};

/// The fields of the page that edits the scripts.
class RunMakeOptionsWidgetBase : public QWidget
{
    Q_OBJECT
public:
    explicit RunMakeOptionsWidgetBase(QWidget *parent);

    Scripts scripts() const;
    void setScripts(const Scripts &scripts);

    QLineEdit *makeLineEdit;
    QToolButton *makeToolButton;
    QLineEdit *makeArgsLineEdit;
    QLineEdit *runLineEdit;
    QToolButton *runToolButton;
    QLineEdit *runArgsLineEdit;
    QCheckBox *defaultScriptsCheckBox;
};

/// The page that edits the scripts, of the open project or those of the settings.
class RunMakeOptionsWidget : public RunMakeOptionsWidgetBase
{
    Q_OBJECT
public:
    static constexpr QLatin1String useDefaultsKey{"/scripts/useDefaultsForProjects"};

    explicit RunMakeOptionsWidget(QWidget *parent);

public slots:
    /// Shows the scripts of the open project; the box is off, always.
    void loadSettings();
    /// Writes the scripts into the open project, and into the settings too where the box
    /// is on.
    void saveSettings();
    void selectRunFolder();
    void selectMakeFolder();
};

} // namespace vesk
