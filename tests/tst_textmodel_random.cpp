#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTest>
#include <QTextStream>

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

constexpr int steps = 20'000;
constexpr int tabStop = 4;
constexpr QChar blank = u' ';

QString trimmedRight(QString line)
{
    while (line.endsWith(blank))
        line.chop(1);
    return line;
}

int firstChar(const QString &line)
{
    for (int column = 0; column < line.size(); ++column) {
        if (!line.at(column).isSpace())
            return column;
    }
    return -1;
}

bool isWord(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('_');
}

/// The text as plain lines, and what the edit operations do to it told in the
/// simplest way.
struct Model
{
    std::vector<QString> lines{QString()};

    QString &at(int line) { return lines[size_t(line)]; }
    int last() const { return int(lines.size()) - 1; }

    void put(int line, int column, const QString &text)
    {
        if (!text.isEmpty())
            at(line) = at(line).leftJustified(column, blank).insert(column, text);
    }

    void take(int line, int column, int length)
    {
        if (column < at(line).size())
            at(line).remove(column, length);
    }

    void breakLine(int line, int column)
    {
        const QString tail = at(line).mid(column);
        at(line).truncate(column);
        lines.insert(lines.begin() + line + 1, tail);
    }

    void join(int line)
    {
        const QString next = at(line + 1);
        const bool isBlank = firstChar(at(line)) == -1;
        at(line) += isBlank ? next : next.trimmed();
        lines.erase(lines.begin() + line + 1);
    }

    QString expanded(const QString &part, int line, int column)
    {
        int before = 0;
        for (int i = 0; i < column; ++i) {
            const bool isTab = i < at(line).size() && at(line).at(i) == u'\t';
            before += isTab ? tabStop - before % tabStop : 1;
        }
        QString result;
        for (const QChar character : part) {
            if (character != u'\t') {
                result += character;
                continue;
            }
            do
                result += blank;
            while ((before + result.size()) % tabStop);
        }
        return result;
    }

    void insert(const QString &text, int line, int column, bool isVertical, bool overwrites)
    {
        const QStringList parts = text.split(u'\n');
        for (int i = 0; i < parts.size(); ++i) {
            const QString part = expanded(parts.at(i), line, column);
            if (overwrites)
                take(line, column, int(part.size()));
            put(line, column, part);
            if (i == parts.size() - 1)
                return;
            if (!isVertical) {
                breakLine(line, column + int(part.size()));
                column = 0;
            }
            ++line;
            if (line > last())
                lines.emplace_back();
        }
    }

    void enter(int line, int column)
    {
        const QString whole = at(line);
        const bool opensBlock = column == whole.size() && whole.endsWith(u':');
        int indent = std::min(column, firstChar(whole));
        if (indent < 0)
            indent = column;
        QString head = whole.left(indent);
        breakLine(line, column);
        if (opensBlock)
            indent += tabStop;
        if (at(line).size() < indent)
            head = QString(indent, blank);
        put(line + 1, 0, head.leftJustified(indent, blank));
    }

    void del(int line, int column)
    {
        if (column < at(line).size())
            take(line, column, 1);
        else if (line < last())
            join(line);
    }

    void backspace(int line, int column)
    {
        if (column == 0) {
            if (line > 0)
                join(line - 1);
            return;
        }
        const int first = firstChar(at(line));
        int length = 1;
        if (first == -1 || first >= column) {
            length = column;
            for (int above = line - 1; above >= 0; --above) {
                const int indent = firstChar(at(above));
                if (indent != -1 && indent < column) {
                    length = column - indent;
                    break;
                }
            }
        }
        take(line, column - length, length);
    }

    void removeStream(const QRect &selected)
    {
        const QRect normal = ordered(selected);
        const bool isDiagonal = runsDiagonally(selected);
        const int start = isDiagonal ? normal.left() : normal.right();
        const int end = isDiagonal ? normal.right() : normal.left();
        take(normal.top(), start, int(at(normal.top()).size()));
        lines.erase(lines.begin() + normal.top() + 1, lines.begin() + normal.bottom());
        take(normal.top() + 1, 0, end);
        join(normal.top());
    }

    void removeBlock(const QRect &selected)
    {
        const QRect normal = ordered(selected);
        for (int line = normal.top(); line <= std::min(normal.bottom(), last()); ++line)
            take(line, normal.left(), normal.width() - 1);
    }

    void replaceWord(int line, int column, const QString &word)
    {
        int start = column;
        while (start > 0 && start <= at(line).size() && isWord(at(line).at(start - 1)))
            --start;
        int end = column;
        while (end < at(line).size() && isWord(at(line).at(end)))
            ++end;
        take(line, start, end - start);
        put(line, start, word);
    }
};

} // namespace

class TestTextModelRandom : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void randomOperations_data();
    void randomOperations();

private:
    void step();
    void edit(int kind, int line, int column);
    void changeFolds();
    void travel();
    bool isSame() const;
    void checkAgainstFreshDocument();
    QString randomText(int most);
    int random(int bound) { return generator.bounded(bound); }

    std::unique_ptr<TextEditorManager> manager;
    std::unique_ptr<TextEditor> editor;
    TextDocument *doc = nullptr;
    TextView *view = nullptr;
    QRandomGenerator generator;
    Model model;
    /// The last operation became a step of the history.
    bool isRecorded = false;
    /// The texts that undo and redo lead to, this one in the middle.
    std::vector<std::vector<QString>> past;
    std::vector<std::vector<QString>> future;
};

void TestTextModelRandom::init()
{
    // Folding tells of every fold that it refuses.
    QLoggingCategory::setFilterRules(u"default.debug=false"_s);
    editor.reset();
    manager = std::make_unique<TextEditorManager>();
    manager->setTabWidth(tabStop);
    editor.reset(manager->createEditor(nullptr, nullptr));
    doc = editor->document();
    doc->setSpacesInTab(tabStop);
    view = editor->view();
    connect(doc->undoStack(), &QtUndoStack::commandExecuted, this, [this] { isRecorded = true; });
    view->setHighlight(u"C++"_s);
    editor->resize(300, 200);
    editor->show();
    past.clear();
    future.clear();
    model = Model();
}

QString TestTextModelRandom::randomText(int most)
{
    static const QStringList pieces = {
        u"/*"_s,  u"*/"_s,   u"\""_s,           u"\n"_s,   u"\n"_s, u"if x:"_s,          u"\t"_s,
        u"   "_s, u"// c"_s, u"#define a \\"_s, u"word"_s, u"x"_s,  QString(QChar(0xE4))};
    QString text;
    for (int i = random(most); i >= 0; --i)
        text += pieces.at(random(int(pieces.size())));
    return text;
}

void TestTextModelRandom::edit(int kind, int line, int column)
{
    const QRect selected(QPoint(column, line),
                         QPoint(random(20), std::min(doc->lastLine(), line + random(12))));
    const bool isOneLine = selected.height() == 1;
    switch (kind) {
    case 0:
    case 1:
    case 2: {
        manager->fVerticalSelection = kind == 1;
        manager->fOvr = kind == 2;
        const QString text = randomText(8);
        doc->insert(text, 0, 0);
        model.insert(text, line, column, kind == 1, kind == 2);
        break;
    }
    case 3:
        doc->insertLineBreak(0, 0);
        model.enter(line, column);
        break;
    case 4:
        doc->del(0, 0);
        model.del(line, column);
        break;
    case 5:
        doc->backspace(0, 0);
        model.backspace(line, column);
        break;
    case 6:
        view->selected = selected;
        doc->indent();
        for (int i = line; i <= std::max(line, selected.bottom()); ++i) {
            const bool isLastAtStart = i > line && i == selected.bottom() && selected.right() == 0;
            if (!isLastAtStart)
                model.put(i, 0, QString(tabStop, blank));
        }
        break;
    case 7:
        view->selected = QRect(QPoint(column, line), QPoint(column, line));
        doc->unindent();
        if (model.at(line).startsWith(u'\t'))
            model.take(line, 0, 1);
        else
            model.take(line, 0, std::clamp(firstChar(model.at(line)), 0, tabStop));
        break;
    case 8:
        doc->selectionCommand(SelectionRemove, selected, false);
        if (isOneLine)
            model.removeBlock(selected);
        else
            model.removeStream(selected);
        break;
    case 9:
        doc->selectionCommand(SelectionCut, selected, true);
        model.removeBlock(selected);
        break;
    default:
        if (doc->currentWord().isEmpty())
            return;
        doc->replaceCurrentWord(u"new_1"_s);
        model.replaceWord(line, column, u"new_1"_s);
    }
    manager->fVerticalSelection = false;
    manager->fOvr = false;
}

void TestTextModelRandom::changeFolds()
{
    TextFolding *folding = doc->folding();
    const int line = random(doc->lastLine() + 1);
    if (random(3) == 0)
        folding->createFold(line, std::min(line + 1 + random(20), doc->lastLine()));
    else if (random(2) == 0)
        folding->toggleFold(line);
    else
        folding->removeFold(line);
}

void TestTextModelRandom::travel()
{
    const bool isUndo = random(3) != 0;
    auto &from = isUndo ? past : future;
    auto &to = isUndo ? future : past;
    QCOMPARE(isUndo ? doc->undoStack()->canUndo() : doc->undoStack()->canRedo(), !from.empty());
    if (from.empty())
        return;
    if (isUndo)
        doc->undoStack()->undo();
    else
        doc->undoStack()->redo();
    isRecorded = false;
    to.push_back(std::move(model.lines));
    model.lines = std::move(from.back());
    from.pop_back();
    QCOMPARE(doc->lastLine(), model.last());
    // Blanks that a line was filled up with stay when the text behind them goes.
    for (int line = 0; line <= model.last(); ++line) {
        const QString now = QStringView(*doc->lineOf(line)).toString();
        QCOMPARE(trimmedRight(now), trimmedRight(model.at(line)));
        model.at(line) = now;
    }
}

bool TestTextModelRandom::isSame() const
{
    if (doc->lastLine() != model.last())
        return false;
    for (int line = 0; line <= model.last(); ++line) {
        if (QStringView(*doc->lineOf(line)) != model.lines[size_t(line)])
            return false;
    }
    return true;
}

void TestTextModelRandom::step()
{
    const int kind = random(16);
    if (kind >= 14)
        return travel();
    if (kind >= 12)
        return changeFolds();
    if (kind == 11) {
        const int line = random(doc->lastLine() + 1);
        doc->textWidth(line, 20);
        view->hl->highlight(doc->lineOf(line));
        return;
    }
    const bool isTooLong = doc->lastLine() > 120;
    const int line = random(doc->lastLine() + (isTooLong ? 0 : 1));
    const int column = random(doc->textLength(line) + 3);
    view->setCursorPosition(line, column, false);
    std::vector<QString> before = model.lines;
    edit(isTooLong ? 8 : kind, line, column);
    if (std::exchange(isRecorded, false)) {
        past.push_back(std::move(before));
        future.clear();
    }
    QVERIFY2(isSame(), qPrintable(u"operation %1 at %2, %3"_s.arg(
                           QString::number(kind), QString::number(line), QString::number(column))));
}

// What edits left behind has to be what loading the same text makes.
void TestTextModelRandom::checkAgainstFreshDocument()
{
    const std::unique_ptr<TextEditor> other(manager->createEditor(nullptr, nullptr));
    TextDocument &fresh = *other->document();
    other->view()->setHighlight(u"C++"_s);
    fresh.setSpacesInTab(tabStop);
    // A final line end more, as the last one is dropped.
    QString content = doc->text() + u'\n';
    QTextStream stream(&content);
    fresh.load(stream);
    QCOMPARE(doc->lastLine(), fresh.lastLine());
    QCOMPARE(doc->maxLength, fresh.maxLength);
    for (int i = 0; i <= fresh.lastLine(); ++i) {
        TextLine *line = doc->lineOf(i);
        TextLine *wanted = fresh.lineOf(i);
        QCOMPARE(line->context(), wanted->context());
        QCOMPARE(line->highlightContext(), wanted->highlightContext());
        if (!line->isHighlighted())
            view->hl->highlight(line);
        other->view()->hl->highlight(wanted);
        for (int column = 0; column < line->textLength(); ++column)
            QCOMPARE(line->attribute(unsigned(column)), wanted->attribute(unsigned(column)));
        QCOMPARE(doc->lineWidth(line), fresh.lineWidth(wanted));
        QCOMPARE(doc->textWidth(i, 500), fresh.textWidth(i, 500));
    }
}

void TestTextModelRandom::randomOperations_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 4; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestTextModelRandom::randomOperations()
{
    QFETCH(quint32, seed);
    generator.seed(seed);
    for (int i = 0; i < steps / 4; ++i) {
        step();
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(u"in step %1"_s.arg(i)));
        if (i % 250 == 0) {
            checkAgainstFreshDocument();
        }
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(u"after step %1"_s.arg(i)));
        if (i % 50 == 0)
            QCoreApplication::processEvents();
    }
    checkAgainstFreshDocument();
    const int all = int(past.size());
    doc->undoStack()->undo(all);
    QVERIFY(!doc->undoStack()->canUndo());
    QCOMPARE(doc->lastLine(), 0);
    QCOMPARE(trimmedRight(doc->text()), QString());
    doc->undoStack()->redo(all);
    for (int line = 0; line <= model.last(); ++line)
        QCOMPARE(trimmedRight(QStringView(*doc->lineOf(line)).toString()),
                 trimmedRight(model.at(line)));
    checkAgainstFreshDocument();
}

QTEST_MAIN(TestTextModelRandom)
#include "tst_textmodel_random.moc"
