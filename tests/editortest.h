#pragma once

#include "tests/testing.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QFont>

#include <memory>

/// What the tests of an editor on the screen start from: a font of known measures,
/// tabs of four columns that stay tabs, and the keyboard.
class EditorTest : public QObject
{
protected:
    void showEditor()
    {
        manager = std::make_unique<zvwidgets::TextEditorManager>();
        manager->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        manager->setTabWidth(4);
        manager->fSaveTab = true;
        editor.reset(manager->createEditor(nullptr, nullptr));
        doc = editor->document();
        view = editor->view();
        cursor = view->cursor();
        editor->resize(500, 300);
        QVERIFY(showActive(editor.get()));
        view->setFocus();
        QTRY_VERIFY(view->hasFocus());
    }

    void closeEditor()
    {
        editor.reset();
        manager.reset();
    }

    std::unique_ptr<zvwidgets::TextEditorManager> manager;
    std::unique_ptr<zvwidgets::TextEditor> editor;
    QPointer<zvwidgets::TextDocument> doc;
    zvwidgets::TextView *view = nullptr;
    zvwidgets::EditorCursor *cursor = nullptr;
};
