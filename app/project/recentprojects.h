#pragma once

#include <QTreeWidget>

#include <memory>

namespace vesk {

/// A project of the list, with what its file says of itself.
class RecentProjectItem : public QTreeWidgetItem
{
public:
    RecentProjectItem(const QString &projectName, const QString &path);

    QString name;
    /// When the file was written, in words.
    QString date;
    QString dirPath;
    QString filePath;
    QString fileName;
};

/// The projects that were used last, shown while none is open. One click selects,
/// Return or a double click opens.
class RecentProjects : public QTreeWidget
{
    Q_OBJECT
public:
    explicit RecentProjects(QWidget *parent = nullptr);
    ~RecentProjects() override;

    /// Shows what is in the list of recent projects now.
    void updateRecent();
    /// Fits the column to the width: long names are cut.
    void adjustContentSize();

signals:
    void chosen(const QString &filePath);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool viewportEvent(QEvent *event) override;

private slots:
    void itemSelected();
    void itemClicked(QTreeWidgetItem *item);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
