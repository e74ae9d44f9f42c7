#include "app/outputreference.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// Places stand near the start of a line; nobody reads on in one of megabytes, UTF-16 units.
constexpr qsizetype searchedLength = 2000;
/// So many names are tried of one line with one form.
constexpr int mostNames = 8;

constexpr QByteArrayView folderNotice("ing directory ");

/// Each gives a file in group 1 and a line in group 2. The first whose file exists wins.
const std::array<QRegularExpression, 8> &forms()
{
    static const std::array<QRegularExpression, 8> all = {
        // "name", line 3 | (file "name" line 3)
        QRegularExpression(uR"(["']([^"']+)["'],? (?:on )?line (\d+))"_s),
        // The whole start of the line, blanks included: name:3:5: text | name:3,
        QRegularExpression(uR"(^\s*(?:In file included from |from )?(\S.*?):(\d+)(?=\D|$))"_s),
        // at name line 3. | in name on line 3 | name: line 3: text
        QRegularExpression(uR"(([^\s"'(:]+)[:,]? (?:on )?line (\d+))"_s),
        // A name with blanks: My name: line 3: text | In my name line 3:
        QRegularExpression(uR"(^(?:In )?(\S.*?):? line (\d+):)"_s),
        // A word anywhere: tool: name:3: text | at f (name:3:5) | --> name:3:5
        QRegularExpression(uR"(([^\s:"'`()\[\]<>,;=|]+):(\d+)(?=\D|$))"_s),
        // name: 3: text
        QRegularExpression(uR"(^(\S.*?): (\d+): )"_s),
        // name(3,5): text
        QRegularExpression(uR"(([^\s()]+)\((\d+)(?:[,:]\d+)?\))"_s),
        // A line beside a hit: name-3-text
        QRegularExpression(uR"(^(\S.*?)-(\d+)-)"_s),
    };
    return all;
}

/// A frame of a Java stack trace names the file without its folder, which is that of
/// the package: at com.example.Main.run(Main.java:3).
OutputReference ofJavaFrame(const QString &line)
{
    static const QRegularExpression frame(
        uR"(\bat (?:[\w.@-]+/)*((?:\w+\.)+)[\w$]+\.[\w$<>]+\((\w+\.\w+):(\d+)\))"_s);
    const QRegularExpressionMatch match = frame.match(line);
    if (!match.hasMatch())
        return {};
    return {match.captured(1).replace(u'.', u'/') + match.captured(2), match.captured(3).toInt()};
}

} // namespace

OutputReferences::OutputReferences(const QString &folder) : folders{QDir(folder).absolutePath()}
{}

void OutputReferences::follow(QByteArrayView lines)
{
    for (qsizetype at = lines.indexOf(folderNotice); at >= 0;) {
        const qsizetype start = at == 0 ? 0 : lines.first(at).lastIndexOf('\n') + 1;
        qsizetype end = lines.indexOf('\n', at);
        if (end < 0)
            end = lines.size();
        followLine(lines.sliced(start, end - start));
        at = lines.indexOf(folderNotice, end);
    }
}

void OutputReferences::followLine(QByteArrayView line)
{
    static const QRegularExpression notice(
        uR"(^\S*(?:make|ninja)[^:]*: (Enter|Leav)ing directory [`'"](.+)['"]\s*$)"_s);
    const QRegularExpressionMatch match = notice.match(QString::fromUtf8(line));
    if (!match.hasMatch())
        return;
    const QString folder = QDir(folders.first()).absoluteFilePath(match.captured(2));
    if (match.captured(1) == "Enter"_L1) {
        folders.append(folder);
        known.clear();
        return;
    }
    const qsizetype left = folders.lastIndexOf(folder);
    if (left > 0)
        folders.removeAt(left);
    known.clear();
}

QString OutputReferences::existing(const QString &name)
{
    const auto before = known.constFind(name);
    if (before != known.constEnd())
        return *before;
    QString found;
    for (auto folder = folders.crbegin(); folder != folders.crend() && found.isEmpty(); ++folder) {
        const QFileInfo file(QDir(*folder).absoluteFilePath(name));
        if (file.isFile())
            found = QDir::cleanPath(file.absoluteFilePath());
    }
    known.insert(name, found);
    return found;
}

OutputReference OutputReferences::find(const QString &line)
{
    const QString text = line.left(searchedLength);
    if (std::none_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return {};
    const auto checked = [this](const QString &name, int number) {
        return number > 0 ? OutputReference{existing(name), number} : OutputReference();
    };
    const OutputReference frame = ofJavaFrame(text);
    if (const OutputReference found = checked(frame.file, frame.line); !found.file.isEmpty())
        return found;
    for (const QRegularExpression &form : forms()) {
        QRegularExpressionMatchIterator matches = form.globalMatch(text);
        for (int i = 0; i < mostNames && matches.hasNext(); ++i) {
            const QRegularExpressionMatch match = matches.next();
            const OutputReference found = checked(match.captured(1), match.captured(2).toInt());
            if (!found.file.isEmpty())
                return found;
        }
    }
    return {};
}

} // namespace vesk
