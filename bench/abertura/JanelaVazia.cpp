// An empty window: the least that a program with one must do to show it.
#include <QApplication>
#include <QDialog>

int main(int argc, char** argv) {
    QApplication aplicacao(argc, argv);
    QDialog janela;
    janela.setFixedSize(683, 428);
    janela.show();
    return QApplication::exec();
}
