// quillora-cli: the editor's logic from a terminal.
#include "cli/Commands.h"

#include <QCoreApplication>
#include <QStringList>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillora-cli"));
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    return quillora::cli::run(args);
}
