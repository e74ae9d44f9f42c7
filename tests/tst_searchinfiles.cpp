#include "app/editors/editors.h"
#include "app/filetype.h"
#include "app/search/filesearch.h"
#include "app/search/searchinfiles.h"
#include "tests/apptest.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QToolButton>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

struct Found
{
    int lineNumber;
    QString line;
    qsizetype column;
    qsizetype length;
    bool operator==(const Found &) const = default;
};

char *toString(const Found &found)
{
    return qstrdup(qPrintable(u"%1:%2+%3 %4"_s.arg(found.lineNumber)
                                  .arg(found.column)
                                  .arg(found.length)
                                  .arg(found.line.left(60))));
}

QList<Found> search(const SearchQuery &query, const QString &path)
{
    QList<Found> result;
    FileSearch engine(query, [] { return true; });
    engine.search(path, [&result](const FileSearch::Hit &hit) {
        result.append({hit.lineNumber, hit.line.toString(), hit.column, hit.length});
    });
    return result;
}

/// The highest resident size since it was reset, in KB.
qint64 memoryPeak()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    static const QRegularExpression line(u"VmHWM:\\s*([0-9]+)"_s);
    return line.match(QString::fromLatin1(status.readAll())).captured(1).toLongLong();
}

bool isWord(QChar c)
{
    return (c.unicode() < 128 && c.isLetterOrNumber()) || c == u'_';
}

/// The hits that reading line by line gives.
QList<Found> naiveSearch(const SearchQuery &query, const QString &text)
{
    QList<Found> result;
    static const QRegularExpression ends(u"\r\n|\r|\n"_s);
    const QStringList lines = text.split(ends);
    const QRegularExpression expression(
        query.text, query.caseSensitive ? QRegularExpression::NoPatternOption
                                        : QRegularExpression::CaseInsensitiveOption);
    for (int i = 0; i < lines.size(); ++i) {
        const QString &line = lines[i];
        qsizetype column = 0;
        for (;;) {
            qsizetype length = query.text.size();
            if (query.regExp) {
                const QRegularExpressionMatch match = expression.match(line, column);
                column = match.capturedStart();
                length = match.capturedLength();
            } else {
                column =
                    line.indexOf(query.text, column,
                                 query.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
            }
            if (column < 0 || length == 0)
                break;
            const qsizetype end = column + length;
            if (!query.wholeWord || ((column == 0 || !isWord(line[column - 1])) &&
                                     (end == line.size() || !isWord(line[end]))))
                result.append({i + 1, line, column, length});
            column = end;
        }
    }
    return result;
}

} // namespace

/// Search in files: the hits are those of reading line by line, whatever the
/// file holds, and the dialog's walk reports them as rows.
class TestSearchInFiles : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase() { dropShell(); }
    void init();
    void hitsAreThoseOfReadingByLine_data();
    void hitsAreThoseOfReadingByLine();
    void blocksDoNotCutLines();
    void longLinesAreSearchedInWindows_data();
    void longLinesAreSearchedInWindows();
    void memoryDoesNotGrowWithTheFile();
    void stopsInsideOfAFile_data();
    void stopsInsideOfAFile();
    void stopsInsideOfAnExpression();
    void whatIsNoFileHasNoHits();
    void walkReportsFilesThenFolders_data();
    void walkReportsFilesThenFolders();
    void rowsComeInTheOrderOfTheFiles();
    void slotsSearchOnTheirOwn();
    void walkEndsInACycleOfLinks();
    void rowsAreMarkedUp();
    void longRowsAreCut();
    void historyIsKept();
    void folderIsChosen();
    void stopButtonEndsTheSearch();
    void missingFolderIsSaid();

private:
    QString write(const QString &name, const QByteArray &bytes) const;
    /// Fills in the dialog; the search starts with its button.
    void ask(SearchInFiles &dialog, const QString &pattern) const;
};

void TestSearchInFiles::initTestCase()
{
    makeShell();
    Editors::self();
}

void TestSearchInFiles::init()
{
    QDir(path(u"tree"_s)).removeRecursively();
    QVERIFY(QDir(dir->path()).mkdir(u"tree"_s));
}

QString TestSearchInFiles::write(const QString &name, const QByteArray &bytes) const
{
    const QString file = path(u"tree/"_s + name);
    QDir().mkpath(QFileInfo(file).path());
    return writeFile(file, bytes);
}

void TestSearchInFiles::ask(SearchInFiles &dialog, const QString &pattern) const
{
    dialog.comboDirectory->setEditText(path(u"tree"_s));
    dialog.comboPattern->setEditText(pattern);
    dialog.comboSearch->setEditText(u"hit"_s);
}

void TestSearchInFiles::hitsAreThoseOfReadingByLine_data()
{
    const Rows<QByteArray, QString> row("bytes", "text");
    const QString mixed =
        u"foo bar\r\nFOO foobar\rfoo\n\nthe last fo\tfoo_ (foo) caf\u00e9 Foo\u00e9 na\u00efve"_s;
    row("utf-8, all line ends", mixed.toUtf8(), mixed);
    row("utf-8 with a mark", QByteArray("\xef\xbb\xbf") + mixed.toUtf8(), mixed);
    row("latin-1", mixed.toLatin1(), mixed);
    QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    row("utf-16", QByteArray(utf16.encode(mixed)), mixed);
    row("empty", QByteArray(), QString());
    row("utf-8 with a byte that is none", mixed.toUtf8() + "foo\xff foo",
        mixed + u"foo\ufffd foo"_s);
    row("ends within a character", "foo \xc3", "foo \u00c3");
    const QByteArray zeros("foo\0foo\0\nfoo", 12);
    row("zero bytes", zeros, QString::fromLatin1(zeros));
    row("kelvin sign folds to k", "\xe2\x84\xaa k K\n", "\u212a k K\n");
}

void TestSearchInFiles::hitsAreThoseOfReadingByLine()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const QString path = write(u"file"_s, bytes);
    const QStringList literals{u"foo"_s,    u"FOO"_s, u"k"_s,    u"\u00e9"_s,
                               u"\u00c3"_s, u"o"_s,   u"o\nf"_s, u"\u20ac"_s};
    const QStringList expressions{u"fo+"_s,        u"^foo"_s,        u"o$"_s,
                                  u"[a-z]+\\s"_s,  u"x*"_s,          u"("_s,
                                  u"Oo|ba"_s,      u"(fo){1,2}o?"_s, u"\\bfo(?!o_)o*b?"_s,
                                  u"[Ff]oo.bar"_s, u"foz*"_s,        u"\\w+\u00e9"_s};
    int hits = 0;
    for (const bool regExp : {false, true}) {
        for (const QString &wanted : regExp ? expressions : literals) {
            for (const bool caseSensitive : {false, true}) {
                for (const bool wholeWord : {false, true}) {
                    const SearchQuery query{wanted, regExp, caseSensitive, wholeWord};
                    // What makes QRegularExpression and ours differ has no place here.
                    if (regExp && (wanted == u"\\w+\u00e9"_s || text.contains(u'\u212a')))
                        continue;
                    const QList<Found> expected =
                        wanted == u"("_s && regExp ? QList<Found>() : naiveSearch(query, text);
                    QCOMPARE(search(query, path), expected);
                    hits += int(expected.size());
                }
            }
        }
    }
    if (text.contains(u"foo"))
        QVERIFY(hits > 0);
}

void TestSearchInFiles::blocksDoNotCutLines()
{
    // Larger than what is read at a time, with lines of all lengths and one that
    // is longer than a block; line ends and hits stand at every place of a block.
    QRandomGenerator random(7);
    QString text;
    const QStringList ends{u"\n"_s, u"\r\n"_s, u"\r"_s};
    while (text.size() < 5 * 1024 * 1024) {
        if (text.size() > 2 * 1024 * 1024 && text.size() < 2 * 1024 * 1024 + 300)
            text += QString(3 * 1024 * 1024 / 2, u'x');
        text += QString(random.bounded(200), u'.') + u"needle"_s + ends[random.bounded(3)];
    }
    const QString plain = write(u"plain"_s, text.toUtf8());
    const QString accented = write(u"accented"_s, (text + u"\u00e9"_s).toUtf8());
    QStringEncoder utf16(QStringConverter::Utf16BE, QStringConverter::Flag::WriteBom);
    const QString wide = write(u"wide"_s, QByteArray(utf16.encode(text)));
    for (const SearchQuery &query : {SearchQuery{u"needle"_s, false, true, false},
                                     SearchQuery{u"Needle"_s, false, false, false},
                                     SearchQuery{u"n[e]+dle"_s, true, true, false}}) {
        const QList<Found> expected = naiveSearch(query, text);
        QVERIFY(expected.size() > 10000);
        QVERIFY(search(query, plain) == expected);
        QVERIFY(search(query, accented) == expected);
        QVERIFY(search(query, wide) == expected);
    }
    // A byte-order mark is no part of a first line longer than a block.
    const QString first = u"needle"_s + QString(3 * 1024 * 1024, u'x') + u"\nneedle"_s;
    const QString marked = write(u"marked"_s, "\xef\xbb\xbf" + first.toUtf8());
    const SearchQuery atStart{u"^needle"_s, true, true, false};
    QCOMPARE(search(atStart, marked).size(), 2);
    QVERIFY(search(atStart, marked) == naiveSearch(atStart, first));
}

void TestSearchInFiles::longLinesAreSearchedInWindows_data()
{
    const Rows<SearchQuery, int> row("query", "most");
    constexpr int all = 0;
    row("text", {u"needle"_s, false, true, false}, all);
    row("any case, whole word", {u"NEEDLE"_s, false, false, true}, all);
    row("not ascii", {u"\u00e9 needle"_s, false, true, false}, all);
    row("expression", {u"n[e]+dle[0-9]*"_s, true, true, false}, all);
    row("expression without a table", {u"(n)(e)\\2dle"_s, true, true, false}, all);
    row("longer than what windows share", {u"needle.*"_s, true, true, false}, 4);
    row("only at the start", {u"^. needle"_s, true, true, false}, 1);
    row("only at the end", {u"needle [0-9a-z]*$"_s, true, true, false}, 1);
}

void TestSearchInFiles::longLinesAreSearchedInWindows()
{
    QFETCH(SearchQuery, query);
    QFETCH(int, most);
    QRandomGenerator random(5);
    QStringList all;
    QString line;
    while (line.size() < 2 * FileSearch::longestLine) {
        all << QString::number(all.size());
        line += (u"\u00e9 needle "_s + all.last()).leftJustified(random.bounded(15, 999), u'.');
    }
    const QString text = u"first\r\n"_s + line + u"\u00e9 needle end\r\n\u00e9 needle 0"_s;
    all << u"end"_s;
    QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    for (const QByteArray &bytes :
         {text.toUtf8(), text.toLatin1(), QByteArray(utf16.encode(text))}) {
        QMap<int, QStringList> found;
        FileSearch engine(query, [] { return true; });
        engine.search(write(u"long"_s, bytes), [&found](const FileSearch::Hit &hit) {
            const QStringView rest = hit.line.mid(hit.line.indexOf(u"needle ", hit.column) + 7);
            found[hit.lineNumber] << rest.left(rest.indexOf(u'.')).toString();
        });
        QCOMPARE(found.keys(), (QList<int>{2, 3}));
        if (most == 0)
            QCOMPARE(found[2], all);
        else
            QVERIFY(found[2].size() <= most);
        QCOMPARE(found[3], QStringList{u"0"_s});
    }
}

void TestSearchInFiles::memoryDoesNotGrowWithTheFile()
{
    const QString path = write(u"sparse"_s, "a hit\n");
    QVERIFY(QFile::resize(path, 400 * 1000 * 1000));
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    QVERIFY(file.write("the last hit") > 0);
    file.close();
    QFile peak(u"/proc/self/clear_refs"_s);
    QVERIFY(peak.open(QIODevice::WriteOnly) && peak.write("5") == 1);
    peak.close();
    const qint64 before = memoryPeak();
    QList<std::pair<int, bool>> found;
    FileSearch engine({u"hit"_s, false, true, false}, [] { return true; });
    engine.search(path, [&found](const FileSearch::Hit &hit) {
        found.append({hit.lineNumber, hit.isPart});
    });
    QCOMPARE(found, (QList<std::pair<int, bool>>{{1, false}, {2, true}}));
    QVERIFY(memoryPeak() < 200 * 1000 + before);
}

void TestSearchInFiles::stopsInsideOfAFile_data()
{
    const Rows<QByteArray, SearchQuery> row("bytes", "query");
    const QByteArray lines = QByteArray("nothing here\n").repeated(1000000);
    const QByteArray line = QByteArray("nothing here ").repeated(1000000);
    row("lines, text", lines, {u"absent"_s, false, true, false});
    row("lines, expression without a fixed text", lines, {u"[xyz]+"_s, true, true, false});
    row("one line, text", line, {u"absent"_s, false, true, false});
    row("one line, any case", line, {u"absent"_s, false, false, false});
    row("one line, expression", line, {u"[a-z]+absent"_s, true, true, false});
    row("one line, expression without a fixed text", line, {u"[xyz]+"_s, true, true, false});
    row("one line, not ascii", line + "\u00e9", {u"\u00e8"_s, false, true, false});
}

void TestSearchInFiles::stopsInsideOfAFile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(SearchQuery, query);
    const QString path = write(u"large"_s, bytes);
    const auto nothing = [](const FileSearch::Hit &) {};
    int asked = 0;
    FileSearch whole(query, [&asked] { return ++asked > 0; });
    QVERIFY(whole.search(path, nothing));
    // While 12 blocks are read, and while what was read is looked through.
    const int times = asked;
    QVERIFY2(times > (bytes.contains('\n') ? 11 : 22), qPrintable(QString::number(times)));
    // Wherever the stop comes it is obeyed at once.
    for (const int last : {3, times - 1}) {
        asked = 0;
        FileSearch stopped(query, [&asked, last] { return ++asked < last; });
        QVERIFY(!stopped.search(path, nothing));
        QCOMPARE(asked, last);
    }
}

void TestSearchInFiles::stopsInsideOfAnExpression()
{
    const QString path = write(u"letters"_s, QByteArray(64000, 'a') + '!');
    int asked = 0;
    FileSearch stopped({u"(.+)\\1+$"_s, true, true, false}, [&asked] { return ++asked < 10; });
    QVERIFY(!stopped.search(path, [](const FileSearch::Hit &) {}));
    QCOMPARE(asked, 10);
}

void TestSearchInFiles::whatIsNoFileHasNoHits()
{
    const QByteArray pipe = QFile::encodeName(path(u"tree/pipe"_s));
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    const SearchQuery query{u"a"_s, false, true, false};
    QVERIFY(search(query, QFile::decodeName(pipe)).isEmpty());
    QVERIFY(search(query, path(u"tree"_s)).isEmpty());
    QVERIFY(search(query, path(u"tree/missing"_s)).isEmpty());
    QVERIFY(search({QString(), false, true, false}, write(u"some"_s, "a")).isEmpty());
}

void TestSearchInFiles::walkReportsFilesThenFolders_data()
{
    const Rows<QString, QStringList> row("masks", "files");
    row("two masks, case told apart", u"*.txt; *.none"_s,
        {u"C.txt"_s, u"a.txt"_s, u"b.txt"_s, u"sub/z.txt"_s});
    row("none", u" "_s,
        {u"C.txt"_s, u"[abc"_s, u"a.cpp"_s, u"a.txt"_s, u"b.txt"_s, u"Sub.txt/y.TXT"_s,
         u"sub/z.txt"_s});
    row("a set", u"[a-c].*"_s, {u"a.cpp"_s, u"a.txt"_s, u"b.txt"_s});
    row("an open bracket is a character", u"[abc"_s, {u"[abc"_s});
}

void TestSearchInFiles::walkReportsFilesThenFolders()
{
    QFETCH(QString, masks);
    QFETCH(QStringList, files);
    QTest::failOnWarning(QRegularExpression(u"."_s));
    for (const char *name : {"b.txt", "a.txt", "C.txt", "a.cpp", "[abc", "sub/z.txt",
                             "Sub.txt/y.TXT", ".hidden/x.txt"})
        write(QString::fromLatin1(name), "hit\n");
    SearchInFiles dialog;
    QSignalSpy rows(&dialog, &SearchInFiles::newEntry);
    ask(dialog, masks);
    dialog.buttonSearch->click();
    QStringList found;
    for (const QList<QVariant> &row : rows) {
        if (row[0].toString().startsWith(u"#bgcolor"_s))
            found << row[2].toString().mid(path(u"tree"_s).size() + 1);
    }
    QCOMPARE(found, files);
    QCOMPARE(rows.size(), 2 * files.size());
}

void TestSearchInFiles::rowsComeInTheOrderOfTheFiles()
{
    // The first files take the longest, and hold more than may wait.
    QStringList expected;
    for (int i = 0; i < 60; ++i) {
        const QString file = u"%1"_s.arg(i, 2, 10, QChar(u'0'));
        const int hits = i < 3 ? 100000 : i % 5;
        const QString written = write(file, QByteArray("a hit\n").repeated(hits));
        for (int line = 0; line <= hits && hits > 0; ++line)
            expected << written + u':' + QString::number(qMax(line, 1));
    }
    SearchInFiles dialog;
    QStringList rows;
    connect(&dialog, &SearchInFiles::newEntry, this,
            [&rows](const QString &, int line, const QString &file) {
                rows << file + u':' + QString::number(line);
            });
    ask(dialog, QString());
    dialog.buttonSearch->click();
    QVERIFY(rows == expected);
}

void TestSearchInFiles::slotsSearchOnTheirOwn()
{
    const QString one = write(u"one"_s, "hit");
    write(u"sub/two"_s, "hit\nhit");
    SearchInFiles dialog;
    QSignalSpy rows(&dialog, &SearchInFiles::newEntry);
    ask(dialog, QString());
    dialog.cancelPressed(); // of nothing
    dialog.processFile(one);
    QCOMPARE(rows.size(), 2);
    dialog.processDirectory(path(u"tree/sub"_s));
    QCOMPARE(rows.size(), 5);
}

void TestSearchInFiles::walkEndsInACycleOfLinks()
{
    write(u"one/file"_s, "hit");
    QVERIFY(QFile::link(path(u"tree"_s), path(u"tree/one/up"_s)));
    QVERIFY(QFile::link(path(u"tree/one"_s), path(u"tree/two"_s)));
    SearchInFiles dialog;
    QSignalSpy rows(&dialog, &SearchInFiles::newEntry);
    ask(dialog, QString());
    dialog.buttonSearch->click();
    // The link to a folder is followed, the way back up is not.
    QCOMPARE(rows.size(), 4);
}

void TestSearchInFiles::rowsAreMarkedUp()
{
    const QString path = write(u"file"_s, "first\n\ta hit and hit\n");
    SearchInFiles dialog;
    QSignalSpy rows(&dialog, &SearchInFiles::newEntry);
    ask(dialog, QString());
    QVERIFY(dialog.buttonSearch->isEnabled());
    dialog.buttonSearch->click();
    const QList<QList<QVariant>> expected{
        {u"#bgcolor{#d0d0d0} "_s + path + u" "_s, 1, path},
        {u"   #color{#909090}2: #color{black}    a #color{blue}hit#color{black} and hit"_s, 2,
         path},
        {u"   #color{#909090}2: #color{black}    a hit and #color{blue}hit#color{black}"_s, 2,
         path}};
    QCOMPARE(QList<QList<QVariant>>(rows), expected);
    dialog.comboSearch->setEditText(QString());
    QVERIFY(!dialog.buttonSearch->isEnabled());
}

void TestSearchInFiles::longRowsAreCut()
{
    const QByteArray half = QByteArray(600 * 1000, 'x');
    const QByteArray line = QByteArray(100 * 1000, 'x') + "hit\n";
    write(u"file"_s, half + "\thit" + half + "\n" + line.repeated(100));
    SearchInFiles dialog;
    QSignalSpy rows(&dialog, &SearchInFiles::newEntry);
    ask(dialog, QString());
    dialog.buttonSearch->click();
    QCOMPARE(rows.size(), 102);
    const QString start = u"   #color{#909090}%1: #color{black}"_s;
    const QString end = u"#color{blue}hit#color{black}"_s;
    QCOMPARE(rows[1][0].toString(),
             start.arg(1) + QString(199, u'x') + u"    "_s + end + QString(200, u'x'));
    QCOMPARE(rows[2][0].toString(), start.arg(2) + QString(100 * 1000, u'x') + end);
    // Past some megabytes of a file all of its long rows are cut.
    QCOMPARE(rows[101][0].toString(), start.arg(101) + QString(200, u'x') + end);
}

void TestSearchInFiles::historyIsKept()
{
    {
        SearchInFiles dialog;
        ask(dialog, u"*.one"_s);
        dialog.buttonSearch->click();
    }
    {
        SearchInFiles dialog;
        QCOMPARE(dialog.comboDirectory->currentText(), path(u"tree"_s));
        QCOMPARE(dialog.comboDirectory->itemText(0), path(u"tree"_s));
        QCOMPARE(dialog.comboPattern->currentText(), u"*.one"_s);
        ask(dialog, u"*.two"_s);
        dialog.comboSearch->setEditText(u"other"_s);
        dialog.buttonSearch->click();
    }
    const SearchInFiles dialog;
    QCOMPARE(dialog.comboPattern->currentText(), u"*.two"_s);
    QCOMPARE(dialog.comboPattern->itemText(0), u"*.two"_s);
    QCOMPARE(dialog.comboPattern->itemText(1), u"*.one"_s);
    QCOMPARE(dialog.comboSearch->itemText(0), u"other"_s);
    QCOMPARE(dialog.comboSearch->itemText(1), u"hit"_s);
}

void TestSearchInFiles::folderIsChosen()
{
    write(u"sub/file"_s, "hit");
    SearchInFiles dialog;
    ask(dialog, QString());
    dialog.show();
    bool hasIcons = false;
    for (const bool accept : {false, true}) {
        QTimer::singleShot(0, &dialog, [&] {
            auto *const chooser = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(chooser);
            QCOMPARE(chooser->directory().path(), path(u"tree"_s));
            hasIcons = chooser->iconProvider() == FileTypeManager::self()->fileIconProvider();
            chooser->selectFile(path(u"tree/sub"_s));
            QDialog *const answered = chooser;
            answered->done(accept ? QDialog::Accepted : QDialog::Rejected);
        });
        dialog.buttonDirectory->click();
        QVERIFY(hasIcons);
        QCOMPARE(dialog.comboDirectory->currentText(), path(accept ? u"tree/sub"_s : u"tree"_s));
    }
}

void TestSearchInFiles::stopButtonEndsTheSearch()
{
    write(u"large"_s, QByteArray("a hit\n").repeated(3000000));
    SearchInFiles dialog;
    dialog.show();
    int rows = 0;
    connect(&dialog, &SearchInFiles::newEntry, this, [&rows] { ++rows; });
    ask(dialog, QString());
    QString shown;
    QTimer::singleShot(100, &dialog, [&] {
        shown = dialog.buttonSearch->text();
        // A double click does not start another search within the one that ends.
        dialog.buttonSearch->click();
        dialog.buttonSearch->click();
    });
    dialog.buttonSearch->click();
    QCOMPARE(shown, u"Stop"_s);
    QVERIFY(rows > 0);
    QVERIFY(rows < 3000000);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.buttonSearch->text(), u"Search"_s);
}

void TestSearchInFiles::missingFolderIsSaid()
{
    SearchInFiles dialog;
    dialog.comboDirectory->setEditText(u"/no/such/folder"_s);
    dialog.comboSearch->setEditText(u"hit"_s);
    Responder responder;
    responder.expect(QMessageBox::Ok);
    dialog.buttonSearch->click();
    QCOMPARE(responder.texts, QStringList{u"The directory \n/no/such/folder\n dosn't exist."_s});
}

QTEST_MAIN(TestSearchInFiles)
#include "tst_searchinfiles.moc"
