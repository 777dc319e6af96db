#include "core/ui/QtTranslation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace QtTranslation {
namespace {

// Qt's Slovenian catalogue was made when the standard buttons' texts ("OK", "Cancel", "&Yes"...)
// belonged to QDialogButtonBox; Qt now asks for them as QPlatformTheme's. The same catalogue
// answers both.
class QtCatalogue : public QTranslator {
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override {
        const QString text = QTranslator::translate(context, sourceText, disambiguation, n);
        if (text.isEmpty() && qstrcmp(context, "QPlatformTheme") == 0) {
            return QTranslator::translate("QDialogButtonBox", sourceText, disambiguation, n);
        }
        return text;
    }
};

}  // namespace

bool Install(QCoreApplication& application) {
    auto* catalogue = new QtCatalogue;
    catalogue->setParent(&application);
    if (!catalogue->load(QStringLiteral("qt_sl"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        delete catalogue;
        return false;
    }
    return QCoreApplication::installTranslator(catalogue);
}

}  // namespace QtTranslation
