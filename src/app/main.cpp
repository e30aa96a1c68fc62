#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Orvan RCU"));
    window.setFixedSize(1298, 468);
    window.setStyleSheet(QStringLiteral("background: black"));
    window.show();
    return app.exec();
}
