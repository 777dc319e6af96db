// The amount at the start of an ingredient text, read exactly: whole numbers, decimals with a
// point or a comma, fractions written with a slash or as one character, mixed numbers as recipes
// and MealMaster write them, and ranges with their upper bound.
#include <QTest>

#include "exchange/Quantity.h"

using Exchange::Quantity;

class TestExchangeQuantity : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsTheAmountAtTheStart_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("rangeTo");
        QTest::addColumn<int>("length");

        QTest::newRow("whole") << "2"
                               << "2"
                               << "" << 1;
        QTest::newRow("mixed") << "1 1/2"
                               << "1.5"
                               << "" << 5;
        QTest::newRow("mixed with a dash") << "1-1/2"
                                           << "1.5"
                                           << "" << 5;
        QTest::newRow("whole and character") << "1½"
                                             << "1.5"
                                             << "" << 2;
        QTest::newRow("whole, space, character") << "1 ½"
                                                 << "1.5"
                                                 << "" << 3;
        QTest::newRow("whole, dash, character") << "1-½"
                                                << "1.5"
                                                << "" << 3;
        QTest::newRow("character") << "½"
                                   << "0.5"
                                   << "" << 1;
        QTest::newRow("decimal comma") << "1,5"
                                       << "1.5"
                                       << "" << 3;
        QTest::newRow("decimal point") << "1.5"
                                       << "1.5"
                                       << "" << 3;
        QTest::newRow("fraction") << "3/4"
                                  << "0.75"
                                  << "" << 3;
        QTest::newRow("fraction slash") << "3⁄4"
                                        << "0.75"
                                        << "" << 3;
        QTest::newRow("improper fraction") << "5/3"
                                           << "1.667"
                                           << "" << 3;
        QTest::newRow("sixteenth stays exact") << "1/16"
                                               << "0.0625"
                                               << "" << 4;
        QTest::newRow("mixed third") << "1 1/3"
                                     << "1.333"
                                     << "" << 5;
        QTest::newRow("zero") << "0"
                              << "0"
                              << "" << 1;
        QTest::newRow("zeros") << "00"
                               << "0"
                               << "" << 2;
        QTest::newRow("point first") << ".5"
                                     << "0.5"
                                     << "" << 2;
        QTest::newRow("trailing zero") << "0.50"
                                       << "0.5"
                                       << "" << 4;
        QTest::newRow("comma and three digits") << "1,000"
                                                << "1"
                                                << "" << 5;
        QTest::newRow("unit after") << "125g"
                                    << "125"
                                    << "" << 3;
        QTest::newRow("spaces before") << "  2 eggs"
                                       << "2"
                                       << "" << 3;
        QTest::newRow("sentence point") << "1. Preheat"
                                        << "1"
                                        << "" << 1;
        QTest::newRow("no fraction after") << "1 2/x apples"
                                           << "1"
                                           << "" << 1;
        QTest::newRow("no denominator") << "1/0"
                                        << "1"
                                        << "" << 1;
        QTest::newRow("two numbers") << "2 3 apples"
                                     << "2"
                                     << "" << 1;
        QTest::newRow("improper after whole") << "1 3/2"
                                              << "1"
                                              << "" << 1;
        QTest::newRow("hyphenated unit") << "2-inch"
                                         << "2"
                                         << "" << 1;
        QTest::newRow("word that starts with to") << "2 tomatoes"
                                                  << "2"
                                                  << "" << 1;
        QTest::newRow("range") << "2-3"
                               << "2"
                               << "3" << 3;
        QTest::newRow("range with spaces") << "2 - 3"
                                           << "2"
                                           << "3" << 5;
        QTest::newRow("range with en dash") << "2–3"
                                            << "2"
                                            << "3" << 3;
        QTest::newRow("range do") << "2 do 3"
                                  << "2"
                                  << "3" << 6;
        QTest::newRow("range to") << "2 to 3 cups"
                                  << "2"
                                  << "3" << 6;
        QTest::newRow("range or") << "2 or 3"
                                  << "2"
                                  << "3" << 6;
        QTest::newRow("range ali") << "2 ali 3"
                                   << "2"
                                   << "3" << 7;
        QTest::newRow("range bis") << "2 bis 3"
                                   << "2"
                                   << "3" << 7;
        QTest::newRow("range to a mixed number") << "1-1 1/2"
                                                 << "1"
                                                 << "1.5" << 7;
        QTest::newRow("range from a fraction") << "3/4-1"
                                               << "0.75"
                                               << "1" << 5;
        QTest::newRow("range of fractions") << "1/2-3/4"
                                            << "0.5"
                                            << "0.75" << 7;
        QTest::newRow("range from a mixed number") << "1 1/2-2"
                                                   << "1.5"
                                                   << "2" << 7;
        QTest::newRow("range of decimals") << "1-1.2kg"
                                           << "1"
                                           << "1.2" << 5;
        QTest::newRow("range without an upper bound") << "2 to taste"
                                                      << "2"
                                                      << "" << 1;
    }

    void readsTheAmountAtTheStart() {
        QFETCH(QString, text);
        QFETCH(QString, value);
        QFETCH(QString, rangeTo);
        QFETCH(int, length);
        const Quantity quantity = Quantity::Read(text);
        QCOMPARE(quantity.value, value);
        QCOMPARE(quantity.rangeTo, rangeTo);
        QCOMPARE(quantity.length, qsizetype(length));
        QVERIFY(!quantity.IsEmpty());
    }

    // Every character fraction, those that repeat rounded to three decimals.
    void readsEveryCharacterFraction_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("value");
        const QList<QPair<QString, QString>> fractions = {
            {"¼", "0.25"},  {"½", "0.5"},   {"¾", "0.75"},  {"⅐", "0.143"}, {"⅑", "0.111"},
            {"⅒", "0.1"},   {"⅓", "0.333"}, {"⅔", "0.667"}, {"⅕", "0.2"},   {"⅖", "0.4"},
            {"⅗", "0.6"},   {"⅘", "0.8"},   {"⅙", "0.167"}, {"⅚", "0.833"}, {"⅛", "0.125"},
            {"⅜", "0.375"}, {"⅝", "0.625"}, {"⅞", "0.875"}, {"↉", "0"},     {"2⅔", "2.667"},
        };
        for (const auto& [text, value] : fractions) {
            QTest::newRow(qPrintable(text)) << text << value;
        }
    }

    void readsEveryCharacterFraction() {
        QFETCH(QString, text);
        QFETCH(QString, value);
        const Quantity quantity = Quantity::Read(text);
        QCOMPARE(quantity.value, value);
        QCOMPARE(quantity.length, text.size());
    }

    void readsNothingWhereNoAmountStarts_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("spaces") << "   ";
        QTest::newRow("word") << "salt to taste";
        QTest::newRow("minus") << "-1 cup";
        QTest::newRow("comma first") << ",5";
        QTest::newRow("point alone") << ". 5";
        QTest::newRow("too many digits") << "1234567890 g";
        QTest::newRow("too many decimals") << "0.1234567 g";
    }

    void readsNothingWhereNoAmountStarts() {
        QFETCH(QString, text);
        const Quantity quantity = Quantity::Read(text);
        QVERIFY(quantity.IsEmpty());
        QCOMPARE(quantity.value, QString());
        QCOMPARE(quantity.rangeTo, QString());
        QCOMPARE(quantity.length, qsizetype(0));
    }
};

QTEST_GUILESS_MAIN(TestExchangeQuantity)
#include "tst_exchange_quantity.moc"
