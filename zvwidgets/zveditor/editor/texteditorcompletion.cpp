#include "zvwidgets/zveditor/editor/texteditor_p.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/pattern/words.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zveditor/view/typedtext.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QSet>

#include <algorithm>

namespace zvwidgets {

namespace {

constexpr int popupSize = 100;

/// Calls \a visit with each word of \a doc, in the order of the text. The view
/// of a word holds as long as the document isn't changed.
template <typename Visit>
void forEachWord(const TextDocument *doc, Visit visit)
{
    for (int line = 0; line <= doc->lastLine(); ++line) {
        const QStringView text = *doc->lineOf(line);
        const qsizetype length = text.size();
        qsizetype column = 0;
        while (column < length) {
            if (!isWordCharacter(text[column])) {
                ++column;
                continue;
            }
            const qsizetype start = column;
            while (column < length && isWordCharacter(text[column]))
                ++column;
            visit(text.mid(start, column - start));
        }
    }
}

/// A completed word takes the place of the typed one and nothing else, in
/// overwrite mode too.
class InsertMode
{
public:
    explicit InsertMode(TextEditorManager *textManager)
        : manager(textManager), overwrite(textManager->fOvr)
    {
        manager->fOvr = false;
    }
    ~InsertMode() { manager->fOvr = overwrite; }
    Q_DISABLE_COPY_MOVE(InsertMode)

private:
    TextEditorManager *const manager;
    const bool overwrite;
};

} // namespace

CompletionList::CompletionList(QObject *filter, QWidget *parent)
    : QListWidget(parent), eventSink(filter)
{
    installEventFilter(filter);
    setWindowFlags(Qt::Popup);
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameStyle(Box | Raised);
    setFixedSize(popupSize, popupSize);
    setUniformItemSizes(true);
}

CompletionList::~CompletionList()
{
    if (eventSink)
        removeEventFilter(eventSink);
}

void CompletionList::fill(const QStringList &words)
{
    clear();
    addItems(words);
    setCurrentRow(0);
}

/// The word that holds the character right of the cursor; where there is none,
/// which is the case while a word is being typed, the one before the cursor.
bool TextEditor::Private::wordRange(int *start, int *end) const
{
    const int line = view->cursor()->line();
    const int column = view->cursor()->column();
    const QStringView text = *doc->lineOf(line);
    for (const int place : {column, column - 1}) {
        if (place < 0 || place >= text.size())
            continue;
        if (!isNameCharacter(text[place]))
            continue;
        return !doc->wordIn(line, place, start, end).isEmpty();
    }
    return false;
}

QString TextEditor::Private::wordAtCursor() const
{
    int start = 0;
    int end = 0;
    if (!wordRange(&start, &end))
        return {};
    return doc->lineOf(view->cursor()->line())->mid(start, end - start);
}

QStringList TextEditor::completionList(const QString &word)
{
    const QString prefix = word.isEmpty() ? d->wordAtCursor() : word;
    if (prefix.isEmpty())
        return {};
    QStringList words;
    QSet<QString> known;
    QSet<QStringView> seen;
    forEachWord(d->doc, [&](QStringView candidate) {
        if (!candidate.startsWith(prefix) || seen.contains(candidate))
            return;
        seen.insert(candidate);
        words.append(candidate.toString());
        known.insert(words.constLast());
    });
    words.sort();
    const QMap<int, QStringList> added = d->manager->addedCompleteWords();
    for (auto it = added.cbegin(); it != added.cend() && it.key() <= prefix.length(); ++it) {
        for (const QString &candidate : it.value()) {
            if (!candidate.startsWith(prefix) || known.contains(candidate))
                continue;
            known.insert(candidate);
            words.append(candidate);
        }
    }
    return words;
}

/// False if there is nothing to choose from.
bool TextEditor::Private::fillCompletionCycle()
{
    if (doc->isReadOnly())
        return false;
    if (viCompletionWords.size() < 2) {
        viCompletionPos = 0;
        viCompletionWords = self->completionList(QString());
    }
    return viCompletionWords.size() >= 2;
}

void TextEditor::Private::showCandidate()
{
    makeViewActive();
    const InsertMode insertMode(manager);
    // This move of the cursor must not end the cycle.
    breakViCompletion = false;
    doc->replaceCurrentWord(viCompletionWords.at(viCompletionPos));
    breakViCompletion = true;
}

void TextEditor::completeWordNext()
{
    if (!d->fillCompletionCycle())
        return;
    d->viCompletionPos = int((d->viCompletionPos + 1) % d->viCompletionWords.size());
    d->showCandidate();
}

void TextEditor::completeWordPrev()
{
    if (!d->fillCompletionCycle())
        return;
    const int count = int(d->viCompletionWords.size());
    d->viCompletionPos = (d->viCompletionPos + count - 1) % count;
    d->showCandidate();
}

void TextEditor::breakViCompletion()
{
    if (!d->breakViCompletion)
        return;
    d->viCompletionPos = 0;
    d->viCompletionWords.clear();
}

void TextEditor::completeWord()
{
    d->completionWord = d->wordAtCursor();
    if (d->completionWord.isEmpty() || d->doc->isReadOnly())
        return;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QSet<QStringView> seen;
    d->completionWords.clear();
    forEachWord(d->doc, [this, &seen](QStringView word) {
        if (seen.contains(word))
            return;
        seen.insert(word);
        d->completionWords.append(word.toString());
    });
    d->completionGrep = d->completionWords.filter(d->completionWord, Qt::CaseInsensitive);
    QGuiApplication::restoreOverrideCursor();
    if (d->completionGrep.isEmpty()) {
        finishCompletion();
        return;
    }
    int start = 0;
    int end = 0;
    if (d->wordRange(&start, &end))
        d->view->setCursorPosition(line(), end, false);
    d->completionGrep.sort();
    d->showPopup();
}

void TextEditor::Private::showPopup()
{
    if (completionPopup)
        completionPopup->close();
    completionPopup = new CompletionList(self, view);
    completionPopup->fill(completionGrep);
    completionPopup->move(popupPosition());
    connect(completionPopup, &QListWidget::itemClicked, self, &TextEditor::applyCompleteWord);
    connect(completionPopup, &QListWidget::itemActivated, self, &TextEditor::applyCompleteWord);
    connect(completionPopup, &QListWidget::itemDoubleClicked, self, &TextEditor::applyCompleteWord);
    // Without the focus before it is shown it would never hear of getting it.
    completionPopup->setFocus();
    completionPopup->show();
}

QPoint TextEditor::Private::popupPosition() const
{
    const QPoint p = view->docPosToScreen(view->cursor()->pos());
    const QPoint below(p.x() - view->contentsX() - 2,
                       p.y() + view->lineHeight() - view->contentsY());
    const QPoint global = self->mapToGlobal(below);
    const QRect desktop = self->screen()->geometry();
    return {std::min(global.x(), desktop.x() + desktop.width() - popupSize - 1),
            std::min(global.y(), desktop.y() + desktop.height() - popupSize - 1)};
}

void TextEditor::Private::filterPopup(QEvent *event)
{
    bool hide = false;
    switch (int(event->type())) {
    case QEvent::FocusIn:
        view->cursor()->activate();
        break;
    case QEvent::FocusOut:
        view->cursor()->deactivate();
        break;
    case QEvent::MouseButtonPress: {
        const auto *press = static_cast<const QMouseEvent *>(event);
        hide = !completionPopup->geometry().contains(press->globalPosition().toPoint());
        break;
    }
    case QEvent::KeyPress:
        hide = filterPopupKey(static_cast<const QKeyEvent *>(event));
        break;
    default:
        break;
    }
    if (hide)
        postFinish();
}

/// True if the popup has to go.
bool TextEditor::Private::filterPopupKey(const QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        return true;
    if (event->key() == Qt::Key_Backspace) {
        completionWord.chop(1);
        return completionWord.isEmpty() || !narrowPopup();
    }
    if (!isTypedText(event))
        return false;
    completionWord += event->text();
    return !narrowPopup();
}

/// False if no word is left.
bool TextEditor::Private::narrowPopup()
{
    completionGrep = completionWords.filter(completionWord, Qt::CaseInsensitive);
    if (completionGrep.isEmpty())
        return false;
    completionGrep.sort();
    completionPopup->fill(completionGrep);
    return true;
}

/// Posted, since the popup must not be destroyed inside its own event.
void TextEditor::Private::postFinish()
{
    QCoreApplication::postEvent(self, new QEvent(completionFinished));
}

void TextEditor::applyCompleteWord()
{
    if (!d->completionPopup || !d->completionPopup->currentItem())
        return;
    // A double click emits several signals; only the first is handled.
    d->completionPopup->disconnect(this);
    const QString text = d->completionPopup->currentItem()->text();
    int start = 0;
    int end = 0;
    if (d->wordRange(&start, &end)) {
        d->makeViewActive();
        const InsertMode insertMode(d->manager);
        d->view->setCursorPosition(line(), start, false);
        d->view->setCursorPosition(line(), end, true);
        d->doc->selectionCommand(SelectionRemove);
        d->doc->insert(text, 0, 0);
    }
    d->postFinish();
}

void TextEditor::finishCompletion()
{
    d->completionGrep.clear();
    d->completionWords.clear();
    d->completionWord.clear();
}

} // namespace zvwidgets
