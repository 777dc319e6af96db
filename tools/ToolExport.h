#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// export --format mealmaster|schema|cooklang [--recipe ID | --type ID | --group ID]
//        [--database NAME] OUTPUT: recipes written for other programs to read.
int Export(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
