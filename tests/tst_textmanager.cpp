#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QFontMetrics>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

class TestTextManager : public QObject
{
    Q_OBJECT

private slots:
    void measuresAddUp_data();
    void measuresAddUp();
    void missingFontIsFixed();
    void settingsReachAllEditors();
    void fontReachesAllViews();
    void marginsFollowTheirFlags();
    void registersDropWhatDies();
    void highlightsAreBuiltAnew();
};

void TestTextManager::measuresAddUp_data()
{
    const Rows<QString> row("family");
    row("fixed", "DejaVu Sans Mono");
    row("proportional", "DejaVu Sans");
}

// Columns are measured one by one while text is drawn in runs.
void TestTextManager::measuresAddUp()
{
    QFETCH(QString, family);
    TextEditorManager manager;
    manager.setFont(QFont(family, 11));
    const QString text = u"AVAWA. Ty, (fj) -> \u00e9\u0416\u03a9 `quoted` ~!%"_s;
    for (int i = 0; i < 4; ++i) {
        int sum = 0;
        for (const QChar c : text)
            sum += manager.width(i, c);
        QCOMPARE(sum, QFontMetrics(manager.font(i)).horizontalAdvance(text));
        QCOMPARE(manager.width(i, text), sum);
    }
}

void TestTextManager::missingFontIsFixed()
{
    TextEditorManager manager;
    const QFont missing(u"No Such Family At All"_s, 10);
    manager.setFont(missing);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(manager.width(i, QChar(u'i')), manager.width(0, QChar(u'W')));
    QCOMPARE(manager.font(), missing);
}

void TestTextManager::settingsReachAllEditors()
{
    TextEditorManager manager;
    const std::unique_ptr<TextEditor> first(manager.createEditor(nullptr, nullptr));
    auto *const doc = new TextDocument(&manager);
    const std::unique_ptr<TextEditor> second(new TextEditor(doc));
    manager.addEditor(second.get(), doc);

    manager.setLineWrap(true);
    QVERIFY(first->getWrap());
    QVERIFY(second->getWrap());
    const std::unique_ptr<TextEditor> third(manager.createEditor(nullptr, nullptr));
    QVERIFY(third->getWrap());

    const QSignalSpy overwrite(&manager, &TextEditorManager::overwriteModeChanged);
    manager.setOverwriteMode(true);
    QCOMPARE(overwrite.count(), 1);
    QVERIFY(manager.overwriteMode());
}

void TestTextManager::fontReachesAllViews()
{
    TextEditorManager manager;
    manager.setFont(QFont(u"DejaVu Sans Mono"_s, 10));
    const std::unique_ptr<TextEditor> first(manager.createEditor(nullptr, nullptr));
    const std::unique_ptr<TextEditor> second(manager.createEditor(nullptr, first->document()));
    first->setText(u"\tsome text"_s);
    const int width = first->document()->textWidth(0, 10);
    const int longest = first->document()->documentWidth();
    manager.setFont(QFont(u"DejaVu Sans Mono"_s, 20));
    for (const TextEditor *editor : {first.get(), second.get()}) {
        QCOMPARE(editor->view()->spaceWidth(), manager.width(0, QChar(u' ')));
        QVERIFY(editor->view()->lineHeight() >= QFontMetrics(manager.font(3)).height());
    }
    QVERIFY(first->document()->textWidth(0, 10) > width);
    QVERIFY(first->document()->documentWidth() > longest);
}

void TestTextManager::marginsFollowTheirFlags()
{
    TextEditorManager manager;
    const std::unique_ptr<TextEditor> editor(manager.createEditor(nullptr, nullptr));
    const auto shown = [&editor](const char *className) {
        for (const QWidget *widget : editor->findChildren<QWidget *>()) {
            if (widget->inherits(className))
                return !widget->isHidden();
        }
        return false;
    };
    QVERIFY(shown("zvwidgets::LineNumberMargin"));
    manager.setLineNumberMarginVisible(false);
    manager.setFoldingMarginVisible(false);
    QVERIFY(!shown("zvwidgets::LineNumberMargin"));
    QVERIFY(!shown("zvwidgets::FoldingMargin"));
    QVERIFY(shown("zvwidgets::IndicatorMargin"));
    manager.setIndicatorMarginVisible(false);
    manager.setSelectionMarginVisible(false);
    manager.setLineNumberMarginVisible(true);
    QVERIFY(!shown("zvwidgets::IndicatorMargin"));
    QVERIFY(!shown("zvwidgets::SelectionMargin"));
    QVERIFY(shown("zvwidgets::LineNumberMargin"));
}

void TestTextManager::registersDropWhatDies()
{
    TextEditorManager manager;
    std::unique_ptr<TextEditor> first(manager.createEditor(nullptr, nullptr));
    std::unique_ptr<TextEditor> second(manager.createEditor(nullptr, first->document()));
    const QPointer<TextDocument> shared = first->document();
    first.reset();
    manager.setTabWidth(3);
    QCOMPARE(second->document()->spacesInTab(), 3);
    QCOMPARE(second->document()->activeView(), second->view());
    {
        const std::unique_ptr<TextEditor> gone(manager.createEditor(nullptr, nullptr));
    }
    manager.setTabWidth(5);
    manager.setLineWrap(true);
    manager.updateMarginsState();
    manager.updateHighlight();
    QCOMPARE(second->document()->spacesInTab(), 5);
    second.reset();
    QVERIFY(!shared);
}

void TestTextManager::highlightsAreBuiltAnew()
{
    TextEditorManager manager;
    const QStringList names = manager.highlightsNames();
    QVERIFY(names.contains(u"C++"_s));
    QVERIFY(std::is_sorted(names.begin(), names.end()));
    const std::unique_ptr<TextEditor> editor(manager.createEditor(nullptr, nullptr));
    editor->setHighlight(u"C++"_s);
    editor->setText(u"int a;"_s);
    editor->view()->hl->attribute(1)->color = QColor(1, 2, 3);
    manager.updateHighlight();
    QCOMPARE(editor->highlight(), u"C++"_s);
    QVERIFY(editor->view()->hl->attribute(1)->color != QColor(1, 2, 3));
    QCOMPARE(editor->view()->highlight(), editor->view()->hl);

    QSignalSpy dropped(&manager, &TextEditorManager::highlightRuleDropped);
    manager.ruleDropped(u"C++"_s, u"(a|b)*"_s);
    QCOMPARE(dropped.takeLast(), QVariantList({u"C++"_s, u"(a|b)*"_s}));
}

QTEST_MAIN(TestTextManager)
#include "tst_textmanager.moc"
