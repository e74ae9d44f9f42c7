#include "app/ctags/textcopy.h"

#include "app/ctags/parser.h"
#include "app/editors/editor.h"

#include <QElapsedTimer>
#include <QTimer>

#include <utility>

namespace vesk {

namespace {

// In ms.
constexpr int pieceTime = 4;
constexpr int pauseAfterChange = 200;
/// The clock is read after so many lines.
constexpr int linesPerLook = 64;

} // namespace

TextCopy::TextCopy(QObject *parent) : QObject(parent), turn(new QTimer(this))
{
    turn->setSingleShot(true);
    connect(turn, &QTimer::timeout, this, &TextCopy::copyPiece);
}

void TextCopy::start(Editor *copied)
{
    editor = copied;
    begin();
    copyPiece();
}

bool TextCopy::isRunning() const
{
    return turn->isActive();
}

QString TextCopy::takeText()
{
    return std::exchange(text, QString());
}

TextLines TextCopy::takeLines()
{
    return std::exchange(lines, TextLines());
}

void TextCopy::begin()
{
    turn->stop();
    copiedRevision = editor->revision();
    copiedKey = 0;
    copiedLines = 0;
    text = QString();
    lines = TextLines();
}

void TextCopy::copyPiece()
{
    if (!editor)
        return;
    if (editor->revision() != copiedRevision) {
        begin();
        turn->start(pauseAfterChange);
        return;
    }
    QElapsedTimer clock;
    clock.start();
    const int count = editor->lineCount();
    while (copiedLines < count) {
        copyLine(editor->line(copiedLines));
        if (copiedLines % linesPerLook == 0 && clock.hasExpired(pieceTime)) {
            turn->start(0);
            return;
        }
    }
    emit finished();
}

void TextCopy::copyLine(const QString &line)
{
    if (copiedLines++ > 0) {
        text += u'\n';
        copiedKey = Parser::joinedKey(copiedKey, u'\n');
    }
    text += line;
    copiedKey = Parser::joinedKey(copiedKey, Parser::calculateKey(line));
    lines.append(line.size());
}

} // namespace vesk
