#include "valueframework/tree.h"
#include "zanstation/commandline.h"
#include "zanstation/exitcodes.h"

#include <QTextStream>

using namespace Qt::StringLiterals;

namespace Commands {

int PrintTree(const QStringList& arguments) {
    CommandLine line(
        u"tree"_s, u"Prints the value tree after start-up: path, type, value and number of observers."_s, {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return line.WithStation([] {
        QString text;
        QTextStream out(&text);
        Tree::Instance()->Dump(out);
        Console::PrintText(text);
        return EXIT_OK;
    });
}

} // namespace Commands
