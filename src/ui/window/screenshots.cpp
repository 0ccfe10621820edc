#include "screenshots.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

namespace Kestrun::Screenshots {

void sizeWindow()
{
    if (!on())
        return;
    QTimer::singleShot(0, qApp, [] {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (!window->isVisible())
                continue;
            window->setGeometry(40, 40, 1440, 900);
            window->raise();
            window->activateWindow();
            return;
        }
    });
}

} // namespace Kestrun::Screenshots
