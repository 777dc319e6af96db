// Amounts with fractions, which the Windows program's collections may hold: the text form on
// pages, the number types of Access files, and an editor that keeps a fraction the cook does
// not edit.
#include <QTest>
#include <memory>

#include "core/Amount.h"
#include "core/Windows1250.h"
#include "core/database/AccessFile.h"
#include "core/database/modDatabase.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace EditorDriver;

class TestFractions : public QObject {
    Q_OBJECT

    std::unique_ptr<frmMain> m_main;

    // The small collection with fractions in recipe 1 (one section: 0.5, then 1.25 g moka) and
    // recipe 3 (sections Testo with 0.333 and Krema with 0.5).
    void Open(const QString& kind) {
        m_main.reset();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Exec("UPDATE [SectionIngredient] SET amount = 0.5 WHERE sectionID = 1;");
        TestDatabase::Insert("SectionIngredient", {{"sectionID", 1},
                                                   {"ingredientID", 4},
                                                   {"unitID", 2},
                                                   {"amount", QStringLiteral("1.25")}});
        TestDatabase::Exec("UPDATE [SectionIngredient] SET amount = 0.333 WHERE sectionID = 2;");
        TestDatabase::Exec("UPDATE [SectionIngredient] SET amount = 0.5 WHERE sectionID = 3;");
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        m_main = std::make_unique<frmMain>();
    }

    static QByteArray Page(qint32 recipeID) {
        return Windows1250::Encode(modDisplay::RecipePage(recipeID));
    }

    static QStringList Amounts(qint32 recipeID) {
        return Rows(QStringLiteral("SELECT [SectionIngredient].amount FROM [RecipeSection] INNER "
                                   "JOIN [SectionIngredient] ON [RecipeSection].sectionID = "
                                   "[SectionIngredient].sectionID WHERE recipeID = %1 ORDER BY "
                                   "place, sectionIngredientID;")
                        .arg(recipeID));
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() {
        m_main.reset();
        modDatabase::Connection.reset();
    }

    void canonicalDecimals() {
        QCOMPARE(Amount::Canonical("1.2500"), QStringLiteral("1.25"));
        QCOMPARE(Amount::Canonical("3.0"), QStringLiteral("3"));
        QCOMPARE(Amount::Canonical("-0.0"), QStringLiteral("0"));
        QCOMPARE(Amount::Canonical("1e-3"), QStringLiteral("0.001"));
        QCOMPARE(Amount::Canonical("007"), QStringLiteral("7"));
        QCOMPARE(Amount::Canonical("-2.50"), QStringLiteral("-2.5"));
        QCOMPARE(Amount::Canonical("pol"), QString());
        QCOMPARE(Amount::Stored(QVariant(2.0)), QVariant(qlonglong(2)));
        QCOMPARE(Amount::Stored(QVariant(0.25)), QVariant(QStringLiteral("0.25")));
        QVERIFY(Amount::Stored(QVariant()).isNull());
    }

    // A whole amount keeps its digits (every page as it was); a fraction has a decimal comma,
    // at most three decimals and no trailing zeros.
    void pageText() {
        QCOMPARE(Amount::PageText(QVariant(qlonglong(500))), QStringLiteral("500"));
        QCOMPARE(Amount::PageText(QVariant(3.0)), QStringLiteral("3"));
        QCOMPARE(Amount::PageText(QVariant(0.5)), QStringLiteral("0,5"));
        QCOMPARE(Amount::PageText(QVariant(1.25)), QStringLiteral("1,25"));
        QCOMPARE(Amount::PageText(QVariant(1.0 / 3.0)), QStringLiteral("0,333"));
        QCOMPARE(Amount::PageText(QVariant(QStringLiteral("0.6667"))), QStringLiteral("0,667"));
        QCOMPARE(Amount::PageText(QVariant(QStringLiteral("2.9999"))), QStringLiteral("3"));
        QCOMPARE(Amount::PageText(QVariant(QStringLiteral("1.2500"))), QStringLiteral("1,25"));
        QCOMPARE(Amount::PageText(QVariant()), QString());
        QCOMPARE(Amount::EditText(QVariant(QStringLiteral("0.6667"))), QStringLiteral("0,6667"));
    }

    // Every number type of Access: a whole number is an integer, a fraction its exact decimal.
    void accessNumberTypes() {
        using AccessFile::NumberFromBytes;
        using T = AccessFile::NumberType;
        QCOMPARE(NumberFromBytes(T::Byte, QByteArray("\xfa", 1)), QVariant(qlonglong(250)));
        QCOMPARE(NumberFromBytes(T::Integer, QByteArray("\xff\xff", 2)), QVariant(qlonglong(-1)));
        QCOMPARE(NumberFromBytes(T::Long, QByteArray("\x40\x42\x0f\x00", 4)),
                 QVariant(qlonglong(1000000)));
        float single = 0.3f;
        QCOMPARE(NumberFromBytes(T::Single, QByteArray(reinterpret_cast<char*>(&single), 4)),
                 QVariant(QStringLiteral("0.3")));
        double twice = 1.25;
        QCOMPARE(NumberFromBytes(T::Double, QByteArray(reinterpret_cast<char*>(&twice), 8)),
                 QVariant(QStringLiteral("1.25")));
        twice = 40.0;
        QCOMPARE(NumberFromBytes(T::Double, QByteArray(reinterpret_cast<char*>(&twice), 8)),
                 QVariant(qlonglong(40)));
        qint64 currency = 12500;  // 1.25 in ten-thousandths
        QCOMPARE(NumberFromBytes(T::Currency, QByteArray(reinterpret_cast<char*>(&currency), 8)),
                 QVariant(QStringLiteral("1.25")));
        currency = 30000;
        QCOMPARE(NumberFromBytes(T::Currency, QByteArray(reinterpret_cast<char*>(&currency), 8)),
                 QVariant(qlonglong(3)));
        // NUMERIC: a sign byte, then the digits as four 32-bit words; 1250 at scale 3 is 1.25.
        QByteArray numeric(17, '\0');
        numeric[13] = char(0xe2);
        numeric[14] = char(0x04);
        QCOMPARE(NumberFromBytes(T::Numeric, numeric, 3, 18), QVariant(QStringLiteral("1.25")));
    }

    // A recipe with one section: the lines list the fractions with a decimal comma; saving
    // keeps them and the page keeps its bytes.
    void aFractionNobodyEditsIsKept_data() { TestDatabase::AddKinds(); }
    void aFractionNobodyEditsIsKept() {
        QFETCH(QString, kind);
        Open(kind);
        const QByteArray before = Page(1);
        QVERIFY2(before.contains("<h3>Sestavine:</h3>0,5 g moka<br>1,25 \x9elica \xc8okolada<br>"),
                 before.constData());
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QCOMPARE(LineTexts(editor), (QStringList{"0,5|g|moka|1|1", "1,25|žlica|Čokolada|2|4"}));
            Click(editor, "cmdOK");
        });
        QCOMPARE(modGeneral::lngLastID, 1);
        QCOMPARE(Amounts(1), (QStringList{"0.5", "1.25"}));
        QCOMPARE(Page(1), before);
    }

    void fractionsInSeveralSectionsAreKept_data() { TestDatabase::AddKinds(); }
    void fractionsInSeveralSectionsAreKept() {
        QFETCH(QString, kind);
        Open(kind);
        const QByteArray before = Page(3);
        QVERIFY(before.contains("0,333"));
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QCOMPARE(LineTexts(editor).value(0).section(QLatin1Char('|'), 0, 0),
                     QStringLiteral("0,333"));
            // Moving between the sections stores them in the working state and back.
            ClickEntry(List(editor, "lstSections"), 1);
            ClickEntry(List(editor, "lstSections"), 0);
            Click(editor, "cmdOK");
        });
        QCOMPARE(Amounts(3), (QStringList{"0.333", "0.5"}));
        QCOMPARE(Page(3), before);
    }

    // An edited line is checked as the cook typed it: the decimal text does not pass, a whole
    // number replaces the fraction.
    void anEditedLineIsCheckedAsTyped() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            ClickEntry(List(editor, "lstSectionIngredient"), 0);
            Click(editor, "cmdSectionIngredientEdit");
            QCOMPARE(Box(editor, "txtAmount")->text(), QStringLiteral("0,5"));
            Click(editor, "cmdIngredientOk");
            QCOMPARE(messages.Texts().value(0), QStringLiteral("Vnesite veljavno količino!"));
            Box(editor, "txtAmount")->setText(QStringLiteral("2"));
            Click(editor, "cmdIngredientOk");
            QCOMPARE(LineTexts(editor).value(0), QStringLiteral("2|g|moka|1|1"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(Amounts(1), (QStringList{"2", "1.25"}));
    }
};

QTEST_MAIN(TestFractions)
#include "tst_fractions.moc"
