// The reference program for start-up time and memory: what any Qt program pays to show a main
// window with a toolbar and nothing else. It starts and shows its window the way Vantorel does:
// the window is made before the event loop runs, centred on the screen, and shown from a
// zero-timer once the loop has started. The toolbar has text items laid out like Vantorel's, but
// no pictures, and there are no views, no menus, no settings and no data.

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QToolBar>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("VantorelBench"));
    QCoreApplication::setApplicationName(QStringLiteral("Bare"));
    QApplication::setQuitOnLastWindowClosed(true);

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("bare"));
    window.resize(1040, 720);

    auto *toolbar = new QToolBar(QStringLiteral("Toolbar"), &window);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    toolbar->setIconSize(QSize(32, 32));
    toolbar->setMovable(false);
    for (const char *label : {"One", "Two", "Three", "Four", "Five", "Six", "Seven", "Eight"})
        toolbar->addAction(QString::fromLatin1(label));
    window.addToolBar(Qt::TopToolBarArea, toolbar);

    if (const QScreen *screen = QGuiApplication::primaryScreen())
        window.setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, window.size(),
                                               screen->availableGeometry()));

    QTimer::singleShot(0, &window, [&window] {
        window.show();
        window.raise();
        window.activateWindow();
    });
    return app.exec();
}
