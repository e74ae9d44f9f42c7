#pragma once

#include <QWidget>

#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;

namespace zvwidgets {

/// The progress window of a file operation. What is set is shown a moment later, so
/// that setting costs nothing. It neither takes the focus nor blocks other windows.
class FileOperatorDialog : public QWidget
{
    Q_OBJECT
public:
    explicit FileOperatorDialog(QWidget *parent = nullptr);
    ~FileOperatorDialog() override;

    /// Items left.
    void setItems(int items);
    void setDest(const QString &dest);
    void setItemName(const QString &name);
    void setOperationName(const QString &name);
    /// 0 counts as 1.
    void setTotalSize(quint64 bytes);
    void setCurrentSize(quint64 bytes);

    /// Shows it over the middle of the main window.
    void show();

    /// The user pressed the button or closed the window.
    bool aborted = false;

    QProgressBar *progressBar;
    QPushButton *buttonAbort;
    QLabel *operationLabel;
    QLabel *itemLabel;
    QLabel *statusLabel;

signals:
    /// Emitted once \a aborted is set.
    void abortRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void abortPressed();
    void updateInfo();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
