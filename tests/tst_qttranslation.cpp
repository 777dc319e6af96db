// Qt's own dialogs in Slovenian: the catalogue installed at start-up translates the standard
// buttons, the print dialog and the file dialog.
#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTest>

#include "core/ui/QtTranslation.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

// The texts of a window's labels, group boxes and buttons.
QStringList Texts(const QWidget* window) {
    QStringList texts;
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        texts << label->text();
    }
    for (const QGroupBox* box : window->findChildren<QGroupBox*>()) {
        texts << box->title();
    }
    for (const QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
        texts << button->text();
    }
    return texts;
}

}  // namespace

class TestQtTranslation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(QtTranslation::Install(*QCoreApplication::instance())); }

    void standardButtons() {
        QDialogButtonBox box(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                             QDialogButtonBox::Yes | QDialogButtonBox::No);
        QCOMPARE(box.button(QDialogButtonBox::Ok)->text(), U("V redu"));
        QCOMPARE(box.button(QDialogButtonBox::Cancel)->text(), U("Prekliči"));
        QCOMPARE(box.button(QDialogButtonBox::Yes)->text(), U("&Da"));
        QCOMPARE(box.button(QDialogButtonBox::No)->text(), U("&Ne"));
    }

    void printDialog() {
        QPrinter printer;
        QPrintDialog dialog(&printer);
        QCOMPARE(dialog.windowTitle(), U("Natisni"));
        const QStringList texts = Texts(&dialog);
        QVERIFY2(texts.contains(U("Tiskalnik")), qPrintable(texts.join(QLatin1Char('|'))));
        QVERIFY2(texts.contains(U("Prekliči")), qPrintable(texts.join(QLatin1Char('|'))));
        QVERIFY(!texts.contains(QStringLiteral("Printer")));
        QVERIFY(!texts.contains(QStringLiteral("Cancel")));
    }

    void fileDialog() {
        QFileDialog dialog(nullptr, QString(), QDir::tempPath());
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        const QStringList texts = Texts(&dialog);
        QVERIFY2(texts.contains(U("Išči v:")), qPrintable(texts.join(QLatin1Char('|'))));
        QVERIFY2(texts.contains(U("Ime &datoteke:")), qPrintable(texts.join(QLatin1Char('|'))));
        QVERIFY2(texts.contains(U("Datoteke vrste:")), qPrintable(texts.join(QLatin1Char('|'))));
        QVERIFY(!texts.contains(QStringLiteral("Look in:")));
    }
};

QTEST_MAIN(TestQtTranslation)
#include "tst_qttranslation.moc"
