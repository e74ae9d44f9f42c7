#include "zvwidgets/zveditor/document/textdoc_p.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zvfiles/filenames.h"
#include "zvwidgets/zvfiles/posixfile.h"

#include <QFile>
#include <QTextStream>

#include <memory>

namespace zvwidgets {

namespace {

/// What gives the lines their contexts, if these can be followed while a file is
/// read. Null if there are none, if the highlights of several views are chained, or if
/// the highlight keeps what only the main thread may use.
const HighlightDefinition *followed(const QList<DocumentView *> &views)
{
    if (views.size() != 1)
        return nullptr;
    const HighlightDefinition &definition = views.constFirst()->hl->rules();
    return definition.canShareBreaks ? &definition : nullptr;
}

ReadOptions readOptions(const QList<DocumentView *> &views)
{
    ReadOptions options;
    const HighlightDefinition *const definition = followed(views);
    if (!definition)
        return options;
    options.follow = [highlight = views.constFirst()->hl](int ctx, TextLine *line) {
        return highlight->doHighlight(ctx, line);
    };
    options.followElsewhere = [definition] {
        const auto scanner = std::make_shared<HighlightScanner>(definition->breaks);
        return [scanner](int ctx, TextLine *line) {
            line->resetHighlight(ctx);
            return scanner->follow(ctx, QStringView(*line));
        };
    };
    return options;
}

} // namespace

// Takes over lines that were just read.
void TextDocument::Private::adopt(TextLineArray &lines, Contexts contexts)
{
    const bool isFollowed = contexts == Contexts::Known && !lines.isEmpty();
    if (!lines.isEmpty()) {
        freeLines();
        contents.swap(lines);
    }
    if (isFollowed)
        q->tagAll();
    else
        q->updateLines();
    newDocGeometry = true;
    q->updateViews();
    q->setReadOnly(false);
}

bool TextDocument::load(QTextStream &ts)
{
    TextLineArray lines;
    lines.setAutoDelete(true);
    TextFormat format;
    TextFile::read(ts, &lines, &format);
    clear();
    d->format = format;
    d->adopt(lines, Contexts::Unknown);
    return true;
}

bool TextDocument::save(QTextStream &ts)
{
    if (isReadOnly())
        return false;
    for (int line = 0; line <= lastLine(); ++line) {
        if (line > 0)
            ts << QLatin1Char('\n');
        ts << static_cast<const QString &>(*lineOf(line));
    }
    ts.flush();
    if (ts.status() == QTextStream::WriteFailed)
        return false;
    documentChanged(false);
    return true;
}

bool TextDocument::load(QIODevice &device, QStringConverter::Encoding wish, QString *error)
{
    TextLineArray lines;
    lines.setAutoDelete(true);
    TextFormat format;
    const HighlightDefinition *const definition = followed(d->views);
    if (!TextFile::read(device, wish, &lines, &format, error, readOptions(d->views)))
        return false;
    clear();
    d->format = format;
    // Who heard of the clearing may have chosen another highlight.
    const bool isFollowed = definition && definition == followed(d->views);
    d->adopt(lines, isFollowed ? Contexts::Known : Contexts::Unknown);
    return true;
}

bool TextDocument::loadFile(const QString &path, QStringConverter::Encoding wish, QString *error)
{
    const QByteArray name = encodedPath(path);
    // Opening a pipe would wait for somebody to write to it.
    const bool isOther = kindOf(name) == FileKind::Other;
    const OpenFile opened = isOther ? OpenFile() : OpenFile::open(name, O_RDONLY);
    const QString reason = isOther ? tr("Not a regular file") : systemError(errno);
    QFile file;
    if (!opened || !file.open(opened.descriptor(), QIODevice::ReadOnly)) {
        if (error)
            *error = opened ? file.errorString() : reason;
        return false;
    }
    return load(file, wish, error);
}

bool TextDocument::saveFile(const QString &path, QString *error)
{
    if (isReadOnly()) {
        if (error)
            *error = tr("The document is read-only");
        return false;
    }
    if (!TextFile::save(path, d->contents, d->format, error))
        return false;
    documentChanged(false);
    return true;
}

QString TextDocument::unencodable() const
{
    return TextFile::unencodable(d->contents, d->format);
}

TextFormat TextDocument::fileFormat() const
{
    return d->format;
}

void TextDocument::setFileFormat(const TextFormat &format)
{
    d->format = format;
}

} // namespace zvwidgets
