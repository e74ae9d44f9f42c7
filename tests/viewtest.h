#pragma once

#include "tests/editortest.h"

#include <QScrollBar>

/// What the tests of the view share.
class ViewTest : public EditorTest
{
protected:
    /// How a text is shown.
    enum Way
    {
        NoFlag = 0,
        Wrapped = 1,
        WrappedAtWords = 2,
        Folded = 4,
        Proportional = 8,
    };

    static QString numberedLines(int count)
    {
        QStringList lines;
        for (int i = 0; i < count; ++i)
            lines << QStringLiteral("line %1").arg(i);
        return lines.join(u'\n');
    }

    void setText(const QString &text)
    {
        editor->setText(text);
        view->setCursorPosition(0, 0, false);
        QCoreApplication::processEvents();
    }

    void apply(int way)
    {
        if (way & Proportional)
            manager->setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
        if (way & WrappedAtWords)
            doc->setWrapMode(zvwidgets::wrapWord);
        doc->setWrap(way & (Wrapped | WrappedAtWords));
        if (way & Folded)
            editor->folding()->createFold(1, 2);
        view->updateLinesList();
    }

    /// The middle of a character, in the view.
    QPoint pointAt(int column, int line) const
    {
        view->updateLinesList();
        const QPoint p = view->docPosToScreen(column, line);
        return {p.x() - view->contentsX() + 3, p.y() - view->contentsY() + view->lineHeight() / 2};
    }

    QScrollBar *bar(Qt::Orientation orientation) const
    {
        for (QScrollBar *each : editor->findChildren<QScrollBar *>()) {
            if (each->orientation() == orientation)
                return each;
        }
        return nullptr;
    }
};
