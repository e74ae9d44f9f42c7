#pragma once

#include "app/ctags/textlines.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QTimer;

namespace vesk {

class Editor;

/// A copy of an editor's text, taken piece by piece between the events: a large text
/// would hold up the window otherwise. If the text changes meanwhile it is copied anew
/// after a moment.
class TextCopy : public QObject
{
    Q_OBJECT
public:
    explicit TextCopy(QObject *parent = nullptr);

    /// Copies the text of \a editor instead of what was begun before. A short text is
    /// copied when this returns.
    void start(Editor *editor);
    bool isRunning() const;

    // What finished() is about; the revision is that of the editor.
    unsigned revision() const { return copiedRevision; }
    /// Parser::calculateKey() of the text.
    int key() const { return copiedKey; }
    QString takeText();
    TextLines takeLines();

signals:
    void finished();

private:
    void begin();
    void copyPiece();
    void copyLine(const QString &line);

    QTimer *const turn;
    QPointer<Editor> editor;
    unsigned copiedRevision = 0;
    int copiedKey = 0;
    int copiedLines = 0;
    QString text;
    TextLines lines;
};

} // namespace vesk
