#pragma once

#include <QElapsedTimer>
#include <QString>

#include <memory>

class QProgressDialog;

namespace vesk {

class Editor;

/// Watches over one search or replacement in an editor: from half a second on the user
/// sees how far it has got, and can stop it. Until this object dies the editor must not.
class SearchProgress
{
    Q_DISABLE_COPY_MOVE(SearchProgress)
public:
    /// \a text says what goes on.
    SearchProgress(Editor *editor, const QString &text);
    ~SearchProgress();

    bool wasStopped() const { return isStopped; }

private:
    bool goOn(int done, int all);
    void show();

    Editor *const watched;
    const QString label;
    QElapsedTimer time;
    QElapsedTimer sinceLook;
    std::unique_ptr<QProgressDialog> dialog; ///< null until it is shown
    bool isStopped = false;
};

} // namespace vesk
