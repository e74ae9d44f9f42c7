#pragma once

#include <QTreeWidgetItem>

namespace vesk {

/// A folder in a tree whose subfolders are read when it is first opened, by the
/// user or by setOpen().
class DirectoryItem : public QTreeWidgetItem
{
public:
    /// A root of the tree \a p. \a absName is the absolute path of the folder.
    DirectoryItem(QTreeWidget *p, const QString &label, const QString &absName);
    /// The folder \a name below \a p.
    DirectoryItem(DirectoryItem *p, const QString &name);

    /// The absolute path with a separator at its end.
    QString fullName() const;

    virtual void setOpen(bool o);
    /// Finds out whether the item can be opened at all.
    virtual void setup();

private:
    void readFolder();
    void setExpandable(bool on);

    QString fileName;
};

} // namespace vesk
