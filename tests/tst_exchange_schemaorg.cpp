// schema.org recipes read into the exchange model: small pages and JSON files, one rule each.
#include <QTest>

#include "tests/support/SchemaOrgRead.h"

using namespace SchemaOrgRead;

namespace {

// JSON written with single quotes, which read better inside a C++ string.
QByteArray Json(const char* text) { return QByteArray(text).replace('\'', '"'); }

QByteArray Page(const QByteArray& body) {
    return "<!DOCTYPE html><html><head><title>Stran</title></head><body>" + body + "</body></html>";
}

QByteArray JsonLd(const QByteArray& json) {
    return "<script type=\"application/ld+json\">" + json + "</script>";
}

}  // namespace

class TestExchangeSchemaOrg : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognisesByContent() {
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(Page("<p>Nič</p>")));
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(
            "\xEF\xBB\xBF  [{\"@type\": \"Recipe\", \"name\": \"A\"}]"));
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(
            "{\"@context\": \"https://schema.org\", \"@type\": [\"Recipe\", \"NewsArticle\"]}"));
        QVERIFY(!Exchange::SchemaOrgFormat::Recognises("{\"@type\": \"Person\", \"name\": \"A\"}"));
        QVERIFY(!Exchange::SchemaOrgFormat::Recognises("{\"@type\": \"Recipe\", "));
        QVERIFY(!Exchange::SchemaOrgFormat::Recognises("MMMMM----- Recipe via Meal-Master"));
        QVERIFY(!Exchange::SchemaOrgFormat::Recognises("<?xml version=\"1.0\"?><recipeml/>"));
    }

    void onePlainRecipe() {
        const Recipe recipe = ReadOne(Page(JsonLd(
            Json("{ "
                 "'@context': 'https://schema.org', '@type': 'Recipe', "
                 "'name': '  Pal&#269;inke <b>z</b> marmelado ', "
                 "'author': {'@type': 'Person', 'name': 'Ana'}, "
                 "'publisher': {'@type': 'Organization', 'name': 'Kuhajmo'}, "
                 "'recipeCategory': 'Sladice, Palačinke', "
                 "'recipeYield': 4, "
                 "'recipeIngredient': ['2 jajci', ' 250 ml  mleka ', '', '100 g moke'], "
                 "'recipeInstructions': '<p>Zmešaj vse.</p><p>Peci na&nbsp;maščobi.</p>'}"))));
        QCOMPARE(recipe.title, QStringLiteral("Palčinke z marmelado"));
        QCOMPARE(recipe.source, QStringLiteral("Ana"));
        QCOMPARE(recipe.categories,
                 (QStringList{QStringLiteral("Sladice"), QStringLiteral("Palačinke")}));
        QCOMPARE(recipe.yield, QStringLiteral("4"));
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].title, QString());
        QCOMPARE(Lines(recipe.sections[0]),
                 (QStringList{QStringLiteral("2 jajci"), QStringLiteral("250 ml mleka"),
                              QStringLiteral("100 g moke")}));
        QCOMPARE(recipe.sections[0].lines[1].amountText, QString());
        QCOMPARE(recipe.sections[0].lines[1].ingredient, QString());
        QCOMPARE(recipe.sections[0].steps,
                 (QStringList{QStringLiteral("Zmešaj vse."), QStringLiteral("Peci na maščobi.")}));
    }

    void sourceOrder() {
        const QByteArray graph = Json(
            "{'@graph': [ "
            "{'@type': 'Person', '@id': '#oseba', 'name': 'Sonja'}, "
            "{'@type': 'Recipe', 'name': 'A', 'author': {'@id': '#oseba'}}, "
            "{'@type': 'Recipe', 'name': 'B', 'author': ['Ana', {'name': 'Bojan'}, 'Ana']}, "
            "{'@type': 'Recipe', 'name': 'C', 'publisher': {'name': 'Kuhajmo'}}, "
            "{'@type': 'Recipe', 'name': 'D', 'url': 'https://example.org/d'}, "
            "{'@type': 'Recipe', 'name': 'E'}]}");
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(
            Page("<link rel=\"canonical\" href=\"https://example.org/stran\">" + JsonLd(graph)),
            notes);
        QCOMPARE(recipes.size(), 5);
        QCOMPARE(recipes[0].source, QStringLiteral("Sonja"));
        QCOMPARE(recipes[1].source, QStringLiteral("Ana, Bojan"));
        QCOMPARE(recipes[2].source, QStringLiteral("Kuhajmo"));
        QCOMPARE(recipes[3].source, QStringLiteral("https://example.org/d"));
        QCOMPARE(recipes[4].source, QStringLiteral("https://example.org/stran"));
        QCOMPARE(notes.problems, QStringList());
    }

    void yields() {
        const QByteArray json = Json(
            "[ "
            "{'@type': 'Recipe', 'name': 'A', 'recipeYield': ['4', '4 Personen']}, "
            "{'@type': 'Recipe', 'name': 'B', 'recipeYield': ['6']}, "
            "{'@type': 'Recipe', 'name': 'C', "
            "'recipeYield': {'@type': 'QuantitativeValue', 'value': '6', 'unitText': 'kosov'}}, "
            "{'@type': 'Recipe', 'name': 'D', 'recipeYield': ' 1 hlebec '}]");
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(json, notes);
        QCOMPARE(recipes.size(), 4);
        QCOMPARE(recipes[0].yield, QStringLiteral("4 Personen"));
        QCOMPARE(recipes[1].yield, QStringLiteral("6"));
        QCOMPARE(recipes[2].yield, QStringLiteral("6 kosov"));
        QCOMPARE(recipes[3].yield, QStringLiteral("1 hlebec"));
    }

    void severalRecipesInSeveralBlocks() {
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(
            Page(
                JsonLd(Json("{'@type': 'WebSite', 'name': 'Kuhajmo'}")) +
                JsonLd(Json("[{'@type': 'Recipe', 'name': 'Prvi'}, "
                            "{'@type': 'BreadcrumbList'}, {'@type': 'Recipe', 'name': 'Drugi'}]")) +
                JsonLd(Json("{'@type': 'WebPage', 'mainEntity': "
                            "{'@type': ['Recipe'], 'name': 'Tretji'}}")) +
                JsonLd("{ to ni JSON }")),
            notes);
        QCOMPARE(recipes.size(), 3);
        QCOMPARE(recipes[0].title, QStringLiteral("Prvi"));
        QCOMPARE(recipes[1].title, QStringLiteral("Drugi"));
        QCOMPARE(recipes[2].title, QStringLiteral("Tretji"));
        QCOMPARE(notes.notRecipes, 0);
        QCOMPARE(notes.problems.size(), 1);
        QVERIFY2(notes.problems[0].startsWith(QStringLiteral("blok JSON-LD 4 ni berljiv: ")),
                 qPrintable(notes.problems[0]));
    }

    void rawLineBreaksInStrings() {
        const Recipe recipe = ReadOne(Page(JsonLd(
            "{\"@type\": \"Recipe\", \"name\": \"Juha\n\", \"recipeInstructions\": [\"Kuhaj\n"
            "dolgo.\"]}")));
        QCOMPARE(recipe.title, QStringLiteral("Juha"));
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].steps, QStringList{QStringLiteral("Kuhaj dolgo.")});
    }

    void stepsInEveryShape() {
        const QByteArray json = Json(
            "{'@type': 'Recipe', 'name': 'A', 'recipeInstructions': [ "
            "'Prvi korak.', "
            "{'@type': 'HowToStep', 'text': 'Drugi <a href=#>korak</a>.', 'name': 'Korak 2'}, "
            "{'@type': 'HowToStep', 'name': 'Tretji korak.'}, "
            "{'@type': 'HowToStep', 'itemListElement': [ "
            "{'@type': 'HowToDirection', 'text': 'Četrti.'}, "
            "{'@type': 'HowToTip', 'text': 'Peti.'}]}, "
            "[' Šesti. ']]}");
        const Recipe recipe = ReadOne(json);
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].steps,
                 (QStringList{QStringLiteral("Prvi korak."), QStringLiteral("Drugi korak."),
                              QStringLiteral("Tretji korak."), QStringLiteral("Četrti."),
                              QStringLiteral("Peti."), QStringLiteral("Šesti.")}));
    }

    // Ingredients under no heading go with the first part of a method in parts.
    void methodInParts() {
        const Recipe recipe =
            ReadOne(Json("{'@type': 'Recipe', 'name': 'A', "
                         "'recipeIngredient': ['1 jajce', 'moka'], "
                         "'recipeInstructions': [ "
                         "{'@type': 'HowToSection', 'name': 'Testo', 'itemListElement': [ "
                         "{'@type': 'HowToStep', 'text': 'Zmešaj.'}, {'@type': 'HowToStep', "
                         "'text': 'Počakaj.'}]}, "
                         "{'@type': 'HowToSection', 'Name': 'Nadev', 'itemListElement': [ "
                         "{'@type': 'HowToStep', 'text': 'Nadevaj.'}]}]}"));
        QCOMPARE(Titles(recipe), (QStringList{QStringLiteral("Testo"), QStringLiteral("Nadev")}));
        QCOMPARE(Lines(recipe.sections[0]),
                 (QStringList{QStringLiteral("1 jajce"), QStringLiteral("moka")}));
        QCOMPARE(recipe.sections[0].steps,
                 (QStringList{QStringLiteral("Zmešaj."), QStringLiteral("Počakaj.")}));
        QCOMPARE(recipe.sections[1].lines.size(), 0);
        QCOMPARE(recipe.sections[1].steps, QStringList{QStringLiteral("Nadevaj.")});
    }

    // Ingredient groups meet the parts of the method of the same title; a method without parts
    // goes to the last group.
    void ingredientGroups() {
        const Recipe matched = ReadOne(Json(
            "{'@type': 'Recipe', 'name': 'A', "
            "'recipeIngredient': [ "
            "{'@type': 'HowToSection', 'name': 'Testo', 'itemListElement': ['1 jajce', 'moka']}, "
            "{'name': 'Nadev', 'recipeIngredient': ['skuta']}], "
            "'recipeInstructions': [ "
            "{'@type': 'HowToSection', 'name': 'nadev', 'itemListElement': ['Nadevaj.']}, "
            "{'@type': 'HowToSection', 'name': 'Peka', 'itemListElement': ['Peci.']}, "
            "{'@type': 'HowToSection', 'name': 'Testo', 'itemListElement': ['Zmešaj.']}]}"));
        QCOMPARE(Titles(matched), (QStringList{QStringLiteral("Testo"), QStringLiteral("Nadev"),
                                               QStringLiteral("Peka")}));
        QCOMPARE(Lines(matched.sections[0]),
                 (QStringList{QStringLiteral("1 jajce"), QStringLiteral("moka")}));
        QCOMPARE(matched.sections[0].steps, QStringList{QStringLiteral("Zmešaj.")});
        QCOMPARE(Lines(matched.sections[1]), QStringList{QStringLiteral("skuta")});
        QCOMPARE(matched.sections[1].steps, QStringList{QStringLiteral("Nadevaj.")});
        QCOMPARE(matched.sections[2].steps, QStringList{QStringLiteral("Peci.")});

        const Recipe headings =
            ReadOne(Json("{'@type': 'Recipe', 'name': 'B', "
                         "'recipeIngredient': ['Testo:', '1 jajce', 'Preliv:', 'smetana'], "
                         "'recipeInstructions': 'Zmešaj.\\n\\nPrelij.'}"));
        QCOMPARE(Titles(headings),
                 (QStringList{QStringLiteral("Testo"), QStringLiteral("Preliv")}));
        QCOMPARE(Lines(headings.sections[0]), QStringList{QStringLiteral("1 jajce")});
        QCOMPARE(headings.sections[0].steps, QStringList());
        QCOMPARE(Lines(headings.sections[1]), QStringList{QStringLiteral("smetana")});
        QCOMPARE(headings.sections[1].steps,
                 (QStringList{QStringLiteral("Zmešaj."), QStringLiteral("Prelij.")}));
    }

    void microdata() {
        const QByteArray body =
            "<div itemscope itemtype='http://schema.org/Recipe'> "
            "<h1 itemprop='name'>Mizerija</h1> "
            "<span itemprop='author' itemscope itemtype='http://schema.org/Person'> "
            "<span itemprop='name'>Marta</span></span> "
            "<meta itemprop='recipeYield' content='4 osebe'> "
            "<ul><li itemprop='recipeIngredient'>2 kumari</li> "
            "<li itemprop='recipeIngredient'>1 dl <b>kisle</b> smetane</li></ul> "
            "<div itemprop='recipeInstructions'><p>Naribaj kumare.</p><p>Dodaj smetano.</p></div> "
            "<div itemscope itemtype='http://schema.org/Comment'> "
            "<span itemprop='name'>Ni recept</span></div> "
            "</div>";
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(Page(body), notes);
        QCOMPARE(recipes.size(), 1);
        QCOMPARE(recipes[0].title, QStringLiteral("Mizerija"));
        QCOMPARE(recipes[0].source, QStringLiteral("Marta"));
        QCOMPARE(recipes[0].yield, QStringLiteral("4 osebe"));
        QCOMPARE(recipes[0].sections.size(), 1);
        QCOMPARE(Lines(recipes[0].sections[0]),
                 (QStringList{QStringLiteral("2 kumari"), QStringLiteral("1 dl kisle smetane")}));
        QCOMPARE(recipes[0].sections[0].steps, (QStringList{QStringLiteral("Naribaj kumare."),
                                                            QStringLiteral("Dodaj smetano.")}));
    }

    void jsonLdBeforeMicrodata() {
        const Recipe recipe = ReadOne(
            Page(JsonLd(Json("{'@type': 'Recipe', 'name': 'Iz JSON-LD'}")) +
                 "<div itemscope itemtype='https://schema.org/Recipe'><span itemprop='name'>Iz "
                 "mikropodatkov</span></div>"));
        QCOMPARE(recipe.title, QStringLiteral("Iz JSON-LD"));
    }

    void pageWithoutRecipe() {
        FileNotes notes;
        QCOMPARE(
            ReadAll(Page(JsonLd(Json("{'@type': 'WebSite'}")) + "<p>Recept</p>"), notes).size(), 0);
        QCOMPARE(notes.notRecipes, 1);
        QCOMPARE(notes.problems,
                 QStringList{QStringLiteral("stran nima podatkov o receptu (schema.org Recipe ne "
                                            "v JSON-LD ne v mikropodatkih)")});
    }

    void jsonWithoutRecipe() {
        FileNotes notes;
        QCOMPARE(ReadAll("[{\"@type\": \"Person\"}]", notes).size(), 0);
        QCOMPARE(notes.notRecipes, 1);
        QCOMPARE(notes.problems,
                 QStringList{QStringLiteral("datoteka JSON nima recepta (schema.org Recipe)")});
        FileNotes broken;
        QCOMPARE(ReadAll("{\"@type\": \"Recipe\", ", broken).size(), 0);
        QCOMPARE(broken.notRecipes, 1);
        QCOMPARE(broken.problems.size(), 1);
        QVERIFY(broken.problems[0].startsWith(QStringLiteral("datoteka JSON ni berljiva: ")));
    }

    void pageInItsOwnEncoding() {
        const QByteArray page = "<html><head><meta charset=\"windows-1250\"></head><body>" +
                                JsonLd(
                                    "{\"@type\": \"Recipe\", \"name\": \"Pe\x9A\x9A"
                                    "ena \xE8"
                                    "ua\"}") +
                                "</body></html>";
        QCOMPARE(ReadOne(page).title, QStringLiteral("Pe\u0161\u0161ena \u010Dua"));
    }
};

QTEST_GUILESS_MAIN(TestExchangeSchemaOrg)
#include "tst_exchange_schemaorg.moc"
