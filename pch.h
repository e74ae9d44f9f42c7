// Only Qt and standard headers: a change of our own code never rebuilds everything.
#pragma once

#include <QApplication>
#include <QColor>
#include <QEvent>
#include <QFont>
#include <QHash>
#include <QList>
#include <QMouseEvent>
#include <QObject>
#include <QPainter>
#include <QPixmap>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QWidget>

#include <algorithm>
#include <memory>
#include <vector>
