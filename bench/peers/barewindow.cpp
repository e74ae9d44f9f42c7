/// A window with a plain text edit and one file in it: what starting any program
/// of the toolkit costs.

#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QPlainTextEdit edit;
    QFile file(QApplication::arguments().value(1));
    if (file.open(QIODevice::ReadOnly))
        edit.setPlainText(QString::fromUtf8(file.readAll()));
    edit.resize(900, 700);
    edit.show();
    return QApplication::exec();
}
