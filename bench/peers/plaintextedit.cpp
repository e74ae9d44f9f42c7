/// The toolkit's own plain text edit.

#include "widgetbench.h"

#include <QFile>
#include <QPlainTextEdit>
#include <QTextBlock>

namespace {

struct Window
{
    Window(const std::string &path, bool wrap)
    {
        edit->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        edit->setLineWrapMode(wrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
        edit->resize(900, 700);
        if (!path.empty()) {
            QFile file(QString::fromStdString(path));
            if (file.open(QIODevice::ReadOnly))
                edit->setPlainText(QString::fromUtf8(file.readAll()));
        }
        bench::PaintWatch watch(painted());
        edit->show();
        edit->setFocus();
        watch.wait();
    }

    QWidget *painted() const { return edit->viewport(); }
    void paste() const { edit->paste(); }
    void undo() const { edit->undo(); }

    int replaceAll() const
    {
        QTextCursor whole(edit->document());
        whole.beginEditBlock();
        int hits = 0;
        QTextCursor found(edit->document());
        for (;;) {
            found = edit->document()->find(QStringLiteral("needle"), found,
                                           QTextDocument::FindCaseSensitively);
            if (found.isNull())
                break;
            found.insertText(QStringLiteral("pin"));
            ++hits;
        }
        whole.endEditBlock();
        return hits;
    }

    double append(const QString &text) const
    {
        edit->appendPlainText(text);
        return double(edit->document()->characterCount()) * 2;
    }
    bool find(const QString &text) const
    {
        return !edit->document()->find(text, 0, QTextDocument::FindCaseSensitively).isNull();
    }

    const std::unique_ptr<QPlainTextEdit> edit = std::make_unique<QPlainTextEdit>();
};

} // namespace

int main(int argc, char **argv)
{
    return bench::run(argc, argv, [] { bench::Widget<Window>::announce<5>(); });
}
