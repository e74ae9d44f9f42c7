#pragma once

#include <QWidget>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace vesk {

class FilesList;

/// The form of the explorer panel.
class ExplorerPanelBase : public QWidget
{
    Q_OBJECT
public:
    explicit ExplorerPanelBase(QWidget *parent);

    QToolButton *backButton;
    QToolButton *forwardButton;
    QToolButton *chooseButton;
    QToolButton *cdUpButton;
    QToolButton *actionButton;
    QToolButton *bookmarkButton;
    FilesList *filesList;
    QLabel *bufferLabel;
    QToolButton *clearBufferButton;
    FilesList *bufferList;

protected:
    /// How the two lists share the height of the panel, 0 to 255 each.
    void setListStretch(int files, int buffer);

private:
    QVBoxLayout *column;
};

} // namespace vesk
