#include "app/explorer/explorerpanelbase.h"

#include "app/explorer/fileslist.h"
#include "app/utils.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace vesk {

namespace {

QToolButton *button(QWidget *parent, const char *name, const char *icon)
{
    auto *const made = new QToolButton(parent);
    made->setObjectName(QString::fromLatin1(name));
    made->setIcon(Utils::iconSet(QString::fromLatin1(icon)));
    made->setIconSize(QSize(20, 20));
    made->setAutoRaise(true);
    // The keys stay with the list.
    made->setFocusPolicy(Qt::NoFocus);
    return made;
}

QHBoxLayout *row(int spacing)
{
    auto *const made = new QHBoxLayout;
    made->setContentsMargins(0, 0, 0, 0);
    made->setSpacing(spacing);
    return made;
}

FilesList *list(QWidget *parent, const char *name, FilesList::Browsing browsing)
{
    auto *const made = new FilesList(parent, browsing);
    made->setObjectName(QString::fromLatin1(name));
    made->setMinimumHeight(1);
    return made;
}

} // namespace

ExplorerPanelBase::ExplorerPanelBase(QWidget *parent)
    : QWidget(parent)
    , backButton(button(this, "backButton", "20x20_Back"))
    , forwardButton(button(this, "forwardButton", "20x20_Forward"))
    , chooseButton(button(this, "chooseButton", "20x20_FindInFiles"))
    , cdUpButton(button(this, "cdUpButton", "20x20_Up"))
    , actionButton(button(this, "actionButton", "20x20_Gear"))
    , bookmarkButton(button(this, "bookmarkButton", "20x20_BookmarkAdd"))
    , filesList(list(this, "filesList", FilesList::Browsing::Enabled))
    , bufferLabel(new QLabel(tr("Buffer:"), this))
    , clearBufferButton(button(this, "clearBufferButton", "9x9_Close"))
    , bufferList(list(this, "bufferList", FilesList::Browsing::Disabled))
    , column(new QVBoxLayout(this))
{
    setWindowTitle(tr("ExplorerPanel"));
    backButton->setToolTip(tr("Go back one page (Alt+Left)"));
    forwardButton->setToolTip(tr("Go forward one page (Alt+Right)"));
    cdUpButton->setToolTip(tr("Up next level in tree (Alt+Up)"));
    bookmarkButton->setToolTip(
        tr("Add current path to bookmarks. Use Ctrl-B to show bookmark menu."));
    bufferLabel->setObjectName(QStringLiteral("bufferLabel"));
    clearBufferButton->setText(tr("Clear"));
    clearBufferButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    clearBufferButton->setIconSize(QSize(15, 15));
    // Commands are about the other list, whichever was clicked last.
    bufferList->setFocusPolicy(Qt::NoFocus);

    QHBoxLayout *const buttons = row(2);
    for (QToolButton *const each :
         {backButton, forwardButton, chooseButton, cdUpButton, actionButton, bookmarkButton})
        buttons->addWidget(each);
    buttons->addStretch();
    QHBoxLayout *const bufferHeader = row(5);
    bufferHeader->addWidget(bufferLabel);
    bufferHeader->addStretch();
    bufferHeader->addWidget(clearBufferButton);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addLayout(buttons);
    column->addWidget(filesList);
    column->addLayout(bufferHeader);
    column->addWidget(bufferList);
    setListStretch(255, 0);
}

void ExplorerPanelBase::setListStretch(int files, int buffer)
{
    column->setStretchFactor(filesList, files);
    column->setStretchFactor(bufferList, buffer);
}

} // namespace vesk
