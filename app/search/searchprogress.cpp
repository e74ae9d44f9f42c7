#include "app/search/searchprogress.h"

#include "app/editors/editor.h"

#include <QCoreApplication>
#include <QProgressDialog>

namespace vesk {

namespace {

constexpr int quietTime = 500; ///< ms
constexpr int timeOfLook = 30; ///< ms from one look at the user's wishes to the next
constexpr int percentOfAll = 100;

} // namespace

SearchProgress::SearchProgress(Editor *editor, const QString &text) : watched(editor), label(text)
{
    time.start();
    watched->setSearchWatch([this](int done, int all) { return goOn(done, all); });
}

SearchProgress::~SearchProgress()
{
    watched->setSearchWatch({});
}

void SearchProgress::show()
{
    dialog = std::make_unique<QProgressDialog>(watched->window());
    dialog->setObjectName(QStringLiteral("SearchProgress"));
    dialog->setWindowTitle(label);
    dialog->setLabelText(label);
    dialog->setCancelButtonText(QCoreApplication::translate("SearchProgress", "Stop"));
    dialog->setRange(0, percentOfAll);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    // The text must not be edited meanwhile.
    dialog->setWindowModality(Qt::ApplicationModal);
    QObject::connect(dialog.get(), &QProgressDialog::canceled, dialog.get(),
                     [this] { isStopped = true; });
    dialog->show();
}

bool SearchProgress::goOn(int done, int all)
{
    if (isStopped || time.elapsed() < quietTime)
        return !isStopped;
    if (!dialog)
        show();
    else if (sinceLook.elapsed() < timeOfLook)
        return true;
    dialog->setValue(int(qint64(done) * percentOfAll / qMax(all, 1)));
    QCoreApplication::processEvents();
    sinceLook.restart();
    return !isStopped;
}

} // namespace vesk
