// The least that a program with a Qt window can be: what a start is measured against.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QMainWindow window;
    window.resize(520, 600);
    window.show();
    return QApplication::exec();
}
