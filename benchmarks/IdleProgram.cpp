#include <QApplication>
#include <QTimer>
#include <cstdio>

/// A Qt program that does nothing: it says so once its event loop runs. What a program's start is
/// measured against.
int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QTimer::singleShot(0, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QApplication::exec();
}
