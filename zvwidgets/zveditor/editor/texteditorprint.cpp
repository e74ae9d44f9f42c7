#include "zvwidgets/zveditor/editor/texteditor_p.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPrinter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace zvwidgets {

namespace {

/// Column after the opening tag of a line, if it begins with one.
qsizetype behindTag(const QString &html)
{
    return html.startsWith(u'<') ? html.indexOf(u'>') + 1 : 0;
}

/// Rich text swallows blanks at the start of a line.
QString keepIndentation(QString html)
{
    const qsizetype start = behindTag(html);
    qsizetype end = start;
    while (end < html.size() && html[end].isSpace())
        ++end;
    html.replace(start, end - start, QStringLiteral("&nbsp;").repeated(end - start));
    return html;
}

/// Preformatted text comes in a font of its own and runs out of the page;
/// printed it has the editor's font, and long lines go on below.
void useEditorFont(QTextDocument *text, const QFont &font)
{
    QTextCharFormat characters;
    characters.setFontFamilies({font.family()});
    characters.setFontFixedPitch(font.fixedPitch());
    QTextBlockFormat block;
    block.setNonBreakableLines(false);
    QTextCursor all(text);
    all.select(QTextCursor::Document);
    all.mergeCharFormat(characters);
    all.mergeBlockFormat(block);
}

/// The part of the page inside of the margins, in pixels of the printer.
QRect printedBody(const QPrinter &printer, const QRect &margins)
{
    constexpr int pointsPerInch = 72;
    const int dpiX = printer.logicalDpiX();
    const int dpiY = printer.logicalDpiY();
    return {margins.x() * dpiX / pointsPerInch, margins.y() * dpiY / pointsPerInch,
            printer.width() - (margins.x() + margins.width()) * dpiX / pointsPerInch,
            printer.height() - (margins.y() + margins.height()) * dpiY / pointsPerInch};
}

void drawPageNumber(QPainter *painter, const QRect &page, int number)
{
    constexpr int gap = 5;
    const QString text = QString::number(number);
    const QFontMetrics metrics = painter->fontMetrics();
    painter->drawText(page.right() - metrics.horizontalAdvance(text),
                      page.bottom() + metrics.ascent() + gap, text);
}

void printPages(QPrinter *printer, QPainter *painter, const QTextDocument &text, const QRect &body)
{
    QRect page = body;
    for (int number = 1;; ++number) {
        painter->setClipRect(page);
        painter->save();
        painter->translate(body.topLeft());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = page.translated(-body.topLeft());
        context.palette.setColor(QPalette::Text, Qt::black);
        text.documentLayout()->draw(painter, context);
        painter->restore();
        painter->setClipping(false);
        painter->setFont(text.defaultFont());
        drawPageNumber(painter, page, number);
        if (number >= text.pageCount())
            return;
        page.translate(0, body.height());
        painter->translate(0, -body.height());
        printer->newPage();
    }
}

} // namespace

QString TextEditor::html(int from, int to)
{
    const int lastLine = d->doc->lastLine();
    const int last = to < 0 || to > lastLine ? lastLine : to;
    QString result = QStringLiteral("<pre>\n");
    for (int line = qMax(from, 0); line <= last; ++line) {
        result += keepIndentation(d->doc->html(line));
        result += u'\n';
    }
    result += QLatin1String("</pre>");
    return result;
}

void TextEditor::print()
{
    if (!d->manager->setupPrinter())
        return;
    QCoreApplication::processEvents();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QPrinter *const printer = d->manager->printer();
    const QRect body = printedBody(*printer, d->manager->margins);
    QPainter painter;
    if (body.width() > 0 && body.height() > 0 && painter.begin(printer)) {
        QTextDocument text;
        text.documentLayout()->setPaintDevice(printer);
        text.setDefaultFont(d->manager->font(0));
        text.setDocumentMargin(0);
        text.setHtml(html(0, -1));
        useEditorFont(&text, d->manager->font(0));
        text.setPageSize(body.size());
        printPages(printer, &painter, text, body);
    }
    QGuiApplication::restoreOverrideCursor();
}

} // namespace zvwidgets
