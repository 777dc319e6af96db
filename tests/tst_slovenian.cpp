// The comparison rules for names: case-blind for every letter, Slovenian order, LIKE with "%"
// and "_"; the rules of the file database's collation and LIKE against a plain reference, and
// the same order on both kinds of database.
#include <QRandomGenerator>
#include <QTest>
#include <algorithm>
#include <functional>

#include "core/database/PlannerStatistics.h"
#include "core/database/SlovenianText.h"
#include "tests/support/TestDatabase.h"

namespace {

using SlovenianText::Compare;
using SlovenianText::LikePattern;

std::string Utf8(const QString& text) { return text.toUtf8().toStdString(); }

bool Like(const QString& pattern, const QString& text) {
    return SlovenianText::Like(Utf8(pattern), Utf8(text));
}

int Sign(int value) { return (value > 0) - (value < 0); }
int CompareTexts(const QString& a, const QString& b) { return Sign(Compare(Utf8(a), Utf8(b))); }

// LIKE as the definition reads: the texts compared character by character after case folding.
bool ReferenceLike(const QList<uint>& p, int pi, const QList<uint>& t, int ti) {
    if (pi == p.size()) {
        return ti == t.size();
    }
    if (p[pi] == '%') {
        for (int skip = ti; skip <= t.size(); ++skip) {
            if (ReferenceLike(p, pi + 1, t, skip)) {
                return true;
            }
        }
        return false;
    }
    if (ti == t.size()) {
        return false;
    }
    const bool same = p[pi] == '_' || QChar::toCaseFolded(p[pi]) == QChar::toCaseFolded(t[ti]);
    return same && ReferenceLike(p, pi + 1, t, ti + 1);
}

bool ReferenceLike(const QString& pattern, const QString& text) {
    return ReferenceLike(pattern.toUcs4(), 0, text.toUcs4(), 0);
}

const QString Lower = QStringLiteral("abcčćdđefghijklmnopqrsštuvwxyzž");
const QString Upper = QStringLiteral("ABCČĆDĐEFGHIJKLMNOPQRSŠTUVWXYZŽ");

}  // namespace

class TestSlovenianText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void everyLetterEqualsItsOtherCase() {
        QCOMPARE(Lower.size(), Upper.size());
        for (int i = 0; i < Lower.size(); ++i) {
            const QString lower = Lower.mid(i, 1);
            const QString upper = Upper.mid(i, 1);
            QCOMPARE(CompareTexts(lower, upper), 0);
            QVERIFY2(Like(upper, lower) && Like(lower, upper), qPrintable(lower));
            // mixed with ASCII on both sides, in the middle of a longer text
            QCOMPARE(CompareTexts(QStringLiteral("Kaša ") + lower + QStringLiteral("x1"),
                                  QStringLiteral("KAŠA ") + upper + QStringLiteral("X1")),
                     0);
            QVERIFY(Like(QStringLiteral("%ra") + upper + QStringLiteral("z%"),
                         QStringLiteral("Pečena RA") + lower + QStringLiteral("Z s česnom")));
            QVERIFY(Like(QStringLiteral("_") + lower + QStringLiteral("_"),
                         QStringLiteral("č") + upper + QStringLiteral("a")));
        }
    }

    void lettersSortInSlovenianOrder() {
        // each letter of the alphabet before the next, whatever the case of either
        for (int i = 0; i + 1 < Lower.size(); ++i) {
            for (const QString& a : {Lower.mid(i, 1), Upper.mid(i, 1)}) {
                for (const QString& b : {Lower.mid(i + 1, 1), Upper.mid(i + 1, 1)}) {
                    QVERIFY2(CompareTexts(a, b) < 0, qPrintable(a + QLatin1Char(' ') + b));
                    QVERIFY2(CompareTexts(b, a) > 0, qPrintable(a + QLatin1Char(' ') + b));
                    QVERIFY2(CompareTexts(a + QStringLiteral("zz"), b + QStringLiteral("a")) < 0,
                             qPrintable(a + QLatin1Char(' ') + b));
                }
            }
        }
    }

    void namesPartingInsideALetterSortByTheLetter() {
        // č (C4 8D) and ć (C4 87) share their first byte
        QCOMPARE(CompareTexts(QStringLiteral("čb"), QStringLiteral("ća")), -1);
        QCOMPARE(CompareTexts(QStringLiteral("ĆA"), QStringLiteral("čb")), 1);
        QCOMPARE(CompareTexts(QStringLiteral("Čaj"), QStringLiteral("čas")), -1);
        QCOMPARE(CompareTexts(QStringLiteral("čaj"), QStringLiteral("ČAJ s sladkorjem")), -1);
        QCOMPARE(CompareTexts(QStringLiteral("sarma"), QStringLiteral("šarma")), -1);
        QCOMPARE(CompareTexts(QStringLiteral("zelje"), QStringLiteral("Želje")), -1);
        QCOMPARE(CompareTexts(QStringLiteral("Juha 2"), QStringLiteral("juha 10")), 1);
        QCOMPARE(CompareTexts(QStringLiteral("juha"), QStringLiteral("Juha")), 0);
        QCOMPARE(CompareTexts(QString(), QStringLiteral("a")), -1);
    }

    void likeOnTypicalValues() {
        QVERIFY(Like(QStringLiteral("%prilijemo vode%"),
                     QStringLiteral("Občasno premešamo in po potrebi PRILIJEMO VODE.")));
        QVERIFY(!Like(QStringLiteral("%žafran%"), QStringLiteral("Začinimo s soljo in poprom.")));
        QVERIFY(Like(QStringLiteral("%ŽAFRAN%"), QStringLiteral("ščepec žafrana")));
        QVERIFY(Like(QStringLiteral("%%"), QString()));
        QVERIFY(!Like(QStringLiteral("_"), QString()));
        QVERIFY(Like(QStringLiteral("mok_"), QStringLiteral("MOKA")));
        QVERIFY(!Like(QStringLiteral("mok_"), QStringLiteral("moka ")));
        QVERIFY(Like(QStringLiteral("%a%a%a"), QStringLiteral("banana")));
        QVERIFY(!Like(QStringLiteral("%a%a%a%b"), QStringLiteral("bananab a")));
        // the Kelvin sign folds to k, the long s to s
        QVERIFY(Like(QStringLiteral("%kis%"), QStringLiteral("Sladko\u212Aiſla")));
    }

    void likeAgreesWithTheReference() {
        // random patterns and texts over letters of both cases, ASCII, "%" and "_"
        const QString patternLetters = QStringLiteral("aAčČšŠkKsé%%__ ž");
        const QString textLetters = QStringLiteral("aAčČšŠkK\u212AžŽsSſÉé ");
        QRandomGenerator random(20261122);
        const auto pick = [&](const QString& from, int length) {
            QString text;
            for (int i = 0; i < length; ++i) {
                text += from.at(random.bounded(from.size()));
            }
            return text;
        };
        for (int i = 0; i < 20000; ++i) {
            const QString pattern = pick(patternLetters, random.bounded(7));
            const LikePattern compiled(Utf8(pattern));
            for (int j = 0; j < 4; ++j) {
                const QString text = pick(textLetters, random.bounded(10));
                QVERIFY2(compiled.Matches(Utf8(text)) == ReferenceLike(pattern, text),
                         qPrintable(pattern + QStringLiteral(" | ") + text));
            }
        }
    }

    void compareIsAnOrder() {
        const QStringList names{
            "Ajdovi žganci", "ajdova kaša", "Čaj",          "čaj z medom", "Ćevapčiči",
            "ćevap",         "cvetača",     "Dušeno zelje", "đuveč",       "Đuveč s svinjino",
            "sarma",         "Šarma",       "špinača",      "Spinača",     "zelje",
            "Želodec",       "Juha 10",     "juha 2",       "kava",        "Kavna krema",
            "Ķeks",          "keksi",       "éclair",       "Eclairs"};
        for (const QString& a : names) {
            QCOMPARE(CompareTexts(a, a), 0);
            for (const QString& b : names) {
                QCOMPARE(CompareTexts(a, b), -CompareTexts(b, a));
                for (const QString& c : names) {
                    if (CompareTexts(a, b) < 0 && CompareTexts(b, c) < 0) {
                        QVERIFY(CompareTexts(a, c) < 0);
                    }
                }
            }
        }
    }

    void bothKindsSortNamesAlike_data() { TestDatabase::AddKinds(); }
    void bothKindsSortNamesAlike() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const QStringList names{"žganci",      "Zelje",         "zelenjavna juha",
                                "šmorn",       "Špinača",       "spinačna pita",
                                "Sarma",       "ričet",         "Ričet s prekajenim",
                                "dušeno",      "đuveč",         "Dunajski zrezek",
                                "ćevapčiči",   "Čaj",           "čajni kolački",
                                "Cvetača",     "cmoki",         "burek",
                                "Ajdova kaša", "ajdovi žganci", "Tatarski biftek",
                                "Juha 2",      "juha 10",       "Kisla juha",
                                "kislo zelje", "Ocvrt sir",     "ocvrti piščanec"};
        for (const QString& name : names) {
            TestDatabase::Insert(QStringLiteral("Ingredient"), {{"name", name}});
        }
        QStringList expected = names;
        std::sort(expected.begin(), expected.end(),
                  [](const QString& a, const QString& b) { return CompareTexts(a, b) < 0; });
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT name FROM [Ingredient] ORDER BY name;")),
                 expected);
        QCOMPARE(expected.mid(0, 6),
                 (QStringList{"Ajdova kaša", "ajdovi žganci", "burek", "cmoki", "Cvetača", "Čaj"}));
    }

    void bothKindsLikeAlike_data() { TestDatabase::AddKinds(); }
    void bothKindsLikeAlike() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        for (const char* text : {"Čebulo PREPRAŽIMO.", "čebulo prepražimo", "Dušimo.",
                                 "ŠČEPEC soli", "ščepec SOLI in popra"}) {
            TestDatabase::Insert(QStringLiteral("Section"), {{"instructions", text}});
        }
        QCOMPARE(TestDatabase::Rows(QStringLiteral(
                     "SELECT instructions FROM [Section] WHERE instructions LIKE '%čebulo%' "
                     "ORDER BY sectionID;")),
                 (QStringList{"Čebulo PREPRAŽIMO.", "čebulo prepražimo"}));
        QCOMPARE(TestDatabase::Rows(QStringLiteral(
                     "SELECT instructions FROM [Section] WHERE instructions LIKE '%Šč_pec SOLI%' "
                     "ORDER BY sectionID;")),
                 (QStringList{"ŠČEPEC soli", "ščepec SOLI in popra"}));
        QCOMPARE(TestDatabase::Rows(QStringLiteral(
                     "SELECT instructions FROM [Section] WHERE instructions LIKE '%žafran%';")),
                 QStringList());
    }

    void ingredientFigureForThePlanner() {
        QCOMPARE(PlannerStatistics::IngredientLinesFigure(1299399, 300), 14LL);
        QCOMPARE(PlannerStatistics::IngredientLinesFigure(20, 300), 1LL);
        QCOMPARE(PlannerStatistics::IngredientLinesFigure(0, 0), 1LL);
    }
};

QTEST_MAIN(TestSlovenianText)
#include "tst_slovenian.moc"
