// The least that a toolkit program in the panel can be: an icon. What it costs is not the program's own
// doing.
#include <QApplication>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    QPixmap image(22, 22);
    image.fill(Qt::white);
    QSystemTrayIcon icon{QIcon(image)};
    icon.show();
    return QApplication::exec();
}
