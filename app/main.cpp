#include <QApplication>

#include "core/modGeneral.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    return modGeneral::Main({}) ? 0 : 1;
}
