#include "app/action.h"
#include "app/actions.h"
#include "app/editors/editors.h"
#include "app/editors/zveditor/hloptions.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/editors/zveditor/zveditorsettingsdialog.h"
#include "app/widgets/colorcombo.h"
#include "tests/apptest.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QCheckBox>
#include <QFontDialog>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace vesk;
using zvwidgets::HLOptions;
using zvwidgets::TextAttribute;
using zvwidgets::TextEditor;
using zvwidgets::TextEditorManager;
using zvwidgets::TextHighlightManager;
using zvwidgets::TextView;

/// Both option dialogs, opened by their commands and filled in by mouse and keys.
class TestOptions : public AppTest
{
    Q_OBJECT

public:
    static void initMain();

private slots:
    void init();
    void cleanup() { dropShell(); }

    void fieldsAreKept();
    void cancelWritesNothing();
    void offeredDiffersFromRunning();
    void typedTabWidth_data();
    void typedTabWidth();
    void storedFonts_data();
    void storedFonts();
    void chosenFontIsShownEverywhere();
    void unwritableSettingsAreTold();
    void everyTextFits();

    void masksChooseTheDefinition_data();
    void masksChooseTheDefinition();
    void coloursReachAllEditors();
    void cancelledHighlighting();
    void editsOutliveTheSelection();
    void standardColoursStay();
    void oddDefinitions_data();
    void oddDefinitions();

private:
    using Edit = std::function<void(ZVEditorSettingsDialog *)>;
    using HighlightEdit = std::function<void(HLOptions *)>;

    template <typename Dialog>
    static void run(const char *action, const std::function<void(Dialog *)> &edit,
                    const char *button);
    static void configure(const Edit &edit, const char *button = "buttonOk")
    {
        run<ZVEditorSettingsDialog>("Editors/configure", edit, button);
    }
    static void configureHighlighting(const HighlightEdit &edit, const char *button = "buttonOk")
    {
        run<HLOptions>("Editors/configure_hl", edit, button);
    }
    static void select(QListWidget *list, const QString &text);
    static void choose(ColorCombo *combo, const QString &name);
    QList<TextView *> views() const;
    static const TextAttribute *attribute(const TextView *view, const QString &item);
    void restart();
};

namespace {

/// A definition of one rule with \a items.
QByteArray definition(const QByteArray &name, const QByteArray &items)
{
    return "<!DOCTYPE Highlight><Highlight name=\"" + name + "\" wildcards=\"*." + name +
           "\"><Items>" + items +
           "</Items><Break><normal><citem regexp=\"$\" mode=\"until\"/></normal></Break>"
           "<Contents><normal><citem item=\"\" regexp=\".\"/></normal></Contents></Highlight>";
}

QString read(const char *key)
{
    return Settings::read(QString::fromLatin1(key), u"none"_s);
}

} // namespace

/// The registry of definitions is built once, so the odd ones have to be there first.
void TestOptions::initMain()
{
    static const QTemporaryDir resources;
    QByteArray many;
    for (int i = 0; i < 300; ++i)
        many += "<I" + QByteArray::number(i) + " color=\"#101010\"/>";
    writeFile(resources.filePath(u"none"_s), definition("none", ""));
    writeFile(resources.filePath(u"many"_s), definition("many", many));
    writeFile(resources.filePath(u"twins"_s),
              definition("twins", "<A color=\"#000001\"/><A color=\"#000002\"/>"));
    qputenv("QTDIR", QFile::encodeName(resources.path()));
}

void TestOptions::init()
{
    failOnBadConnects();
    dir.reset();
    makeShell();
    ZVEditor::loadConfig();
    shell->rebuildUI();
    QVERIFY(showActive(shell));
}

/// Opens the dialog by its command, has it filled in and presses the button.
template <typename Dialog>
void TestOptions::run(const char *action, const std::function<void(Dialog *)> &edit,
                      const char *button)
{
    Responder responder;
    responder.expect([&](QWidget *widget) {
        auto *const dialog = qobject_cast<Dialog *>(widget);
        QVERIFY(dialog);
        edit(dialog);
        QTest::mouseClick(dialog->template findChild<QPushButton *>(QString::fromLatin1(button)),
                          Qt::LeftButton);
    });
    Actions::action(QString::fromLatin1(action))->trigger();
    QVERIFY(responder.isDone());
}

/// Walks to the row with the keys of the list.
void TestOptions::select(QListWidget *list, const QString &text)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(0)).center());
    for (int i = 0; i < list->count() && list->currentItem()->text() != text; ++i)
        QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(list->currentItem()->text(), text);
}

void TestOptions::choose(ColorCombo *combo, const QString &name)
{
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    for (int i = 0; i < combo->count() && combo->currentText() != name; ++i) {
        // Choosing "custom" on the way would ask for a colour.
        if (combo->currentIndex() == 0)
            combo->setCurrentIndex(1);
        QTest::keyClick(combo, Qt::Key_Down);
    }
    QCOMPARE(combo->currentText(), name);
}

QList<TextView *> TestOptions::views() const
{
    return shell->findChildren<TextView *>();
}

const TextAttribute *TestOptions::attribute(const TextView *view, const QString &item)
{
    for (const TextAttribute *each : view->hl->attributeList) {
        if (!each || each->itemName == item)
            return each;
    }
    return nullptr;
}

/// As a new run of the program finds it.
void TestOptions::restart()
{
    dropShell();
    makeShell();
    ZVEditor::loadConfig();
}

void TestOptions::fieldsAreKept()
{
    const auto boxes = [](ZVEditorSettingsDialog *dialog) {
        QList<QCheckBox *> all = dialog->findChildren<QCheckBox *>();
        all.removeOne(dialog->bIndentationGuides);
        return all;
    };
    QHash<QString, bool> offered;
    configure([&](ZVEditorSettingsDialog *dialog) {
        QCOMPARE(boxes(dialog).size(), 11);
        QVERIFY(!dialog->bIndentationGuides->isVisible());
        for (QCheckBox *const box : boxes(dialog)) {
            offered[box->objectName()] = box->isChecked();
            // Those with a letter by that, the others by a click.
            if (box->shortcut().isEmpty())
                QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
            else
                QTest::keySequence(dialog, box->shortcut());
            QTRY_VERIFY(box->isChecked() != offered.value(box->objectName()));
        }
    });
    QCOMPARE(read("/zveditor/IndentationGuides"), u"false"_s);
    restart();
    configure(
        [&](ZVEditorSettingsDialog *dialog) {
            for (const QCheckBox *box : boxes(dialog))
                QVERIFY2(box->isChecked() != offered.value(box->objectName()),
                         qPrintable(box->objectName()));
        },
        "buttonCancel");
    const TextEditorManager &manager = *ZVEditor::manager();
    QVERIFY(!manager.fAutoIndent && !manager.fBackspaceIndent && !manager.fSmartHome);
    QVERIFY(!manager.fCursorWrap && !manager.fSaveTab && manager.fRemoveSpaces);
    QVERIFY(!manager.fLineWrap && !manager.fIndicatorMargin && !manager.fLineNumberMargin);
    QVERIFY(manager.fSelectionMargin && manager.fVerticalSelection);
}

void TestOptions::cancelWritesNothing()
{
    const QFont before = ZVEditor::manager()->font();
    configure(
        [](ZVEditorSettingsDialog *dialog) {
            QTest::keyClick(dialog, Qt::Key_I, Qt::AltModifier);
            QTRY_VERIFY(!dialog->bAutoIndent->isChecked());
            dialog->lTabWidth->setText(u"7"_s);
        },
        "buttonCancel");
    QCOMPARE(read("/zveditor/AutoIndent"), u"none"_s);
    QCOMPARE(read("/zveditor/TabWidth"), u"none"_s);
    QCOMPARE(read("/zveditor/Font"), u"none"_s);
    QCOMPARE(ZVEditor::manager()->font(), before);
    QVERIFY(ZVEditor::manager()->fAutoIndent);
}

void TestOptions::offeredDiffersFromRunning()
{
    TextEditorManager &manager = *ZVEditor::manager();
    QVERIFY(!manager.fLineNumberMargin);
    QCOMPARE(manager.font().pointSize(), 11);
    configure([](ZVEditorSettingsDialog *dialog) {
        QVERIFY(dialog->bLineNumberMargin->isChecked());
        QVERIFY(!dialog->bIndentationGuides->isChecked());
        QCOMPARE(dialog->lTabWidth->text(), u"4"_s);
        QCOMPARE(dialog->fontViewLabel->font().pointSize(), 14);
        dialog->lTabWidth->setText(u"8"_s);
    });
    QVERIFY(manager.fLineNumberMargin && !manager.fIndentationGuides);
    QCOMPARE(manager.font().pointSize(), 14);
    QCOMPARE(manager.tabWidth(), 8);
    QVERIFY(!views().isEmpty());
    for (const TextView *view : views())
        QCOMPARE(view->document()->spacesInTab(), 8);
    configure([](ZVEditorSettingsDialog *dialog) { QCOMPARE(dialog->lTabWidth->text(), u"4"_s); },
              "buttonCancel");
}

void TestOptions::typedTabWidth_data()
{
    const Rows<QString, QString, int> row("typed", "stored", "used");
    row("a number", "8", "8", 8);
    row("too many", "17", "17", 16);
    row("none", "0", "0", 1);
    row("negative", "-1", "-1", 1);
    row("no number", "x", "0", 1);
    row("beyond all numbers", "99999999999", "0", 1);
}

void TestOptions::typedTabWidth()
{
    QFETCH(QString, typed);
    QFETCH(QString, stored);
    QFETCH(int, used);
    configure([&](ZVEditorSettingsDialog *dialog) {
        dialog->lTabWidth->selectAll();
        QTest::keyClicks(dialog->lTabWidth, typed);
    });
    QCOMPARE(read("/zveditor/TabWidth"), stored);
    QCOMPARE(views().constFirst()->document()->spacesInTab(), used);
    restart();
    QCOMPARE(views().constFirst()->document()->spacesInTab(), used);
}

void TestOptions::storedFonts_data()
{
    const Rows<QString, qreal> row("stored", "points");
    row("a font", "DejaVu Sans Mono,9,-1,5,50,0,0,0,0,0", 9);
    row("one that is gone", "No Such Family,13,-1,5,50,0,0,0,0,0", 13);
    row("nothing", "", 11);
    row("no font", ",,,", 11);
    row("larger than any screen", "DejaVu Sans Mono,10000,-1,5,50,0,0,0,0,0", 500);
    row("without end", "DejaVu Sans Mono,inf,-1,5,50,0,0,0,0,0", 500);
}

void TestOptions::storedFonts()
{
    QFETCH(QString, stored);
    QFETCH(qreal, points);
    if (stored == u",,,")
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Invalid description"_s));
    Settings::write(u"/zveditor/Font"_s, stored);
    ZVEditor::loadConfig();
    QCOMPARE(ZVEditor::manager()->font().pointSizeF(), points);
    QVERIFY(views().constFirst()->fontHeight() < 2000);
    QVERIFY(!views().constFirst()->grab().isNull());
}

void TestOptions::chosenFontIsShownEverywhere()
{
    Editors::self()->newEditor();
    QCOMPARE(views().size(), 2);
    const QFont wanted(u"DejaVu Sans Mono"_s, 9);
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (auto *const fonts = qobject_cast<QFontDialog *>(QApplication::activeModalWidget())) {
            fonts->setCurrentFont(wanted);
            fonts->accept();
        }
    });
    timer.start(5);
    configure([](ZVEditorSettingsDialog *dialog) {
        QTest::keyClick(dialog, Qt::Key_S, Qt::AltModifier);
        QTRY_COMPARE(dialog->fontViewLabel->font().pointSize(), 9);
    });
    QVERIFY(read("/zveditor/Font").startsWith(u"DejaVu Sans Mono,9,"_s));
    // The dialog names the style, which bold text may not keep.
    QVERIFY(QFontInfo(ZVEditor::manager()->font(2)).bold());
    QVERIFY(!QFontInfo(ZVEditor::manager()->font(0)).italic());
    const int height = QFontMetrics(ZVEditor::manager()->font(0)).height();
    for (const TextView *view : views())
        QCOMPARE(view->fontHeight(), height);
    // A size of nothing leaves the toolkit's own.
    Settings::write(u"/zveditor/Font"_s, u"DejaVu Sans Mono,0,-1,5,50,0,0,0,0,0"_s);
    ZVEditor::loadConfig();
    QVERIFY(views().constFirst()->fontHeight() > 5);
}

void TestOptions::unwritableSettingsAreTold()
{
    Settings::setFileName(write(u"file"_s) + u"/vesk.ini"_s);
    configure([](ZVEditorSettingsDialog *dialog) { dialog->lTabWidth->setText(u"3"_s); });
    QCOMPARE(views().constFirst()->document()->spacesInTab(), 3);
    const QString status = shell->statusBar()->findChildren<QLabel *>().constFirst()->text();
    QVERIFY2(status.contains(u"cannot be written"_s), qPrintable(status));
}

/// No widget of the dialogs is smaller than what it shows.
void TestOptions::everyTextFits()
{
    const auto look = [](QWidget *dialog) {
        const QList<QWidget *> all = dialog->findChildren<QWidget *>();
        for (const QWidget *widget : all) {
            const QSize wanted = widget->minimumSizeHint();
            // A frame around a layout adds to the hint what the layout doesn't need.
            if (!widget->isVisible() || qobject_cast<const QGroupBox *>(widget) ||
                widget->objectName() == u"fontViewLabel"_s)
                continue;
            QString claim;
            QDebug(&claim) << widget << widget->size() << wanted << dialog->font().pointSize();
            QVERIFY2(widget->size() == widget->size().expandedTo(wanted), qPrintable(claim));
        }
    };
    const QFont before = QApplication::font();
    for (const int points : {8, 12, 24}) {
        QFont larger = before;
        larger.setPointSize(points);
        QApplication::setFont(larger);
        configure(look, "buttonCancel");
        configureHighlighting(look, "buttonCancel");
    }
    QApplication::setFont(before);
}

void TestOptions::masksChooseTheDefinition_data()
{
    const Rows<QString, QString, QString> row("masks", "file", "definition");
    row("another ending", "*.xyz", "a.xyz", "C++");
    row("no longer its own", "*.xyz", "a.cpp", "NoHighlight");
    row("blanks only", "   ", "a.cpp", "NoHighlight");
    row("nothing", "", "a.cpp", "NoHighlight");
    row("a set", "*.[xc]pp", "a.cpp", "C++");
    row("a set that is not closed", "[abc;*.cpp", "a.cpp", "C++");
    row("a comma and signs of the settings' own", "*.a,b;*=%\\", "x.a,b", "C++");
    row("very long", QString(10000, u'x') + u";*.cpp"_s, "a.cpp", "C++");
}

void TestOptions::masksChooseTheDefinition()
{
    QFETCH(QString, masks);
    QFETCH(QString, file);
    QFETCH(QString, definition);
    QString former;
    const auto setMasks = [&](const QString &text) {
        configureHighlighting([&](HLOptions *dialog) {
            select(dialog->listHl, u"C++"_s);
            former = dialog->lineFileMask->text();
            dialog->lineFileMask->setText(text);
        });
    };
    QTest::ignoreMessage(QtDebugMsg, "accept");
    setMasks(masks);
    Editors::self()->open(write(file));
    const auto isShown = [](const TextView *view) { return view->isVisible(); };
    const QList<TextView *> all = views();
    const QString chosen = (*std::find_if(all.begin(), all.end(), isShown))->hl->name();
    // Another run reads the same.
    Settings::forceWrite();
    const auto registry = TextHighlightManager::buildRegistry(ZVEditor::manager());
    QCOMPARE(registry->find(u"C++"_s)->mask, masks);
    QTest::ignoreMessage(QtDebugMsg, "accept");
    setMasks(u"*.cpp; *.C; *.cxx; *.cc; *.h; *.H"_s);
    QCOMPARE(former, masks);
    QCOMPARE(chosen, definition);
}

void TestOptions::coloursReachAllEditors()
{
    Editors::self()->open(write(u"a.cpp"_s, "\nint a;\n"));
    Editors::self()->open(write(u"b.cpp"_s, "\nint b;\n"));
    QTest::ignoreMessage(QtDebugMsg, "accept");
    configureHighlighting([](HLOptions *dialog) {
        select(dialog->listHl, u"C++"_s);
        select(dialog->listItems, u"Type"_s);
        choose(dialog->color, u"darkCyan"_s);
        choose(dialog->bgColor, u"yellow"_s);
        for (QCheckBox *box : {dialog->checkBold, dialog->checkItalic}) {
            if (!box->isChecked())
                QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
        }
    });
    int found = 0;
    for (const TextView *view : views()) {
        if (view->hl->name() != u"C++")
            continue;
        ++found;
        const TextAttribute *const type = attribute(view, u"Type"_s);
        QCOMPARE(type->color, QColor(u"darkCyan"_s));
        QCOMPARE(type->bgcolor, QColor(Qt::yellow));
        QCOMPARE(type->fontType, 3);
        const QImage shown = const_cast<TextView *>(view)->grab().toImage();
        QCOMPARE(shown.pixelColor(4, view->fontHeight() + 1), QColor(Qt::yellow));
    }
    QCOMPARE(found, 2);
    QCOMPARE(read("/zveditor/hl/C++/Type/style"), u"ib"_s);
    QCOMPARE(read("/zveditor/hl/C++/Type/color"), u"#008b8b"_s);
    QCOMPARE(read("/zveditor/hl/C++/Type/bgcolor"), u"#ffff00"_s);
    // Without a background it is none again.
    QTest::ignoreMessage(QtDebugMsg, "accept");
    configureHighlighting([](HLOptions *dialog) {
        select(dialog->listHl, u"C++"_s);
        select(dialog->listItems, u"Type"_s);
        QVERIFY(dialog->checkBold->isChecked() && dialog->checkItalic->isChecked());
        QCOMPARE(dialog->bgColor->currentText(), u"yellow"_s);
        QTest::keyClick(dialog->bgColor, Qt::Key_Home);
    });
    QCOMPARE(read("/zveditor/hl/C++/Type/bgcolor"), QString());
    for (const TextView *view : views()) {
        if (view->hl->name() == u"C++")
            QVERIFY(!attribute(view, u"Type"_s)->usebg);
    }
}

void TestOptions::cancelledHighlighting()
{
    configureHighlighting(
        [](HLOptions *dialog) {
            select(dialog->listHl, u"Python"_s);
            dialog->lineFileMask->setText(u"*.q"_s);
            select(dialog->listItems, u"Memo"_s);
            QTest::mouseClick(dialog->checkBold, Qt::LeftButton, {}, QPoint(8, 8));
        },
        "buttonCancel");
    QCOMPARE(read("/zveditor/hl/Python wildcards"), u"none"_s);
    QCOMPARE(read("/zveditor/hl/Python/Memo/style"), u"none"_s);
    configureHighlighting(
        [](HLOptions *dialog) {
            select(dialog->listHl, u"Python"_s);
            QCOMPARE(dialog->lineFileMask->text(), u"*.py"_s);
            select(dialog->listItems, u"Memo"_s);
            QVERIFY(!dialog->checkBold->isChecked());
        },
        "buttonCancel");
}

void TestOptions::editsOutliveTheSelection()
{
    QTest::ignoreMessage(QtDebugMsg, "accept");
    configureHighlighting([](HLOptions *dialog) {
        for (const QString &name : {u"Python"_s, u"Ruby"_s}) {
            select(dialog->listHl, name);
            select(dialog->listItems, u"Keyword"_s);
            choose(dialog->color, u"magenta"_s);
        }
        select(dialog->listHl, u"Python"_s);
        QCOMPARE(dialog->listItems->currentItem()->text(), u"Text"_s);
        select(dialog->listItems, u"Keyword"_s);
        QCOMPARE(dialog->color->currentText(), u"magenta"_s);
    });
    QCOMPARE(read("/zveditor/hl/Python/Keyword/color"), u"#ff00ff"_s);
    QCOMPARE(read("/zveditor/hl/Ruby/Keyword/color"), u"#ff00ff"_s);
    QCOMPARE(read("/zveditor/hl/Python/Memo/color"), u"#888888"_s);
}

/// What nobody touched is written as it was. Two items of one name get the same.
void TestOptions::standardColoursStay()
{
    const auto listed = [] {
        QStringList all;
        for (const QString &name : ZVEditor::manager()->highlightsNames()) {
            const std::unique_ptr<zvwidgets::TextHighlight> highlight(
                TextHighlightManager::highlight(ZVEditor::manager(), name));
            for (const TextAttribute *each : highlight->attributeList) {
                if (!each || name == u"twins")
                    break;
                all.append(each->itemName + each->color.name() + each->bgcolor.name() +
                           QString::number(each->fontType) + QString::number(each->usebg));
            }
        }
        return all;
    };
    const QStringList before = listed();
    QVERIFY(before.size() > 250);
    QTest::ignoreMessage(QtDebugMsg, "accept");
    configureHighlighting([](HLOptions *) {});
    Settings::forceWrite();
    QCOMPARE(listed(), before);
}

void TestOptions::oddDefinitions_data()
{
    const Rows<QString, int> row("definition", "items");
    row("no items", "none", 0);
    row("more items than there can be", "many", 256);
    row("two of one name", "twins", 2);
}

void TestOptions::oddDefinitions()
{
    QFETCH(QString, definition);
    QFETCH(int, items);
    QTest::ignoreMessage(QtDebugMsg, "accept");
    configureHighlighting([&](HLOptions *dialog) {
        select(dialog->listHl, definition);
        QCOMPARE(dialog->listItems->count(), items);
        for (const QWidget *widget : std::initializer_list<QWidget *>{
                 dialog->color, dialog->bgColor, dialog->checkBold, dialog->checkItalic})
            QCOMPARE(widget->isEnabled(), items > 0);
        dialog->hlSelected(definition);
        if (items > 0)
            choose(dialog->color, u"red"_s);
    });
    if (items > 0) {
        const QString first = definition == u"many" ? u"I0"_s : u"A"_s;
        QCOMPARE(Settings::read(u"/zveditor/hl/"_s + definition + u'/' + first + u"/color"_s),
                 u"#ff0000"_s);
    }
}

QTEST_MAIN(TestOptions)
#include "tst_options.moc"
