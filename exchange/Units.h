#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace Exchange {

// The measuring units that ingredient lines write, each written form with the key of its unit:
// "c", "cup", "cups" and "skodelica" are all "cup". The collection's units are found later by
// key, so a form read here needs no knowledge of the collection.
class Units {
public:
    // One unit: its key, the forms that write it, its name in a collection and its MealMaster
    // code (empty when MealMaster has none).
    struct Row {
        QString key;
        QStringList forms;
        QString name;
        QString mealMaster;
    };

    explicit Units(const QList<Row>& rows);

    // The common units of English, Slovenian and German recipes and MealMaster's unit codes,
    // from the table exchange/data/units.tsv.
    static const Units& Common();

    // The rows the units were made of, in their order.
    const QList<Row>& Rows() const { return m_rows; }
    // The row of a key; nullptr for none.
    const Row* Find(const QString& key) const;

    // The key of a written form ("Tbsp." -> "tablespoon"), empty when the form is unknown.
    // A form of one letter is matched as written ("T" is a tablespoon, "t" a teaspoon), a
    // longer one without regard to case; a final period is left out.
    QString Key(QStringView written) const;

    // The length of the longest form at the start of the text that ends where a word ends
    // (before a character that is no letter), with a period that follows it; 0 for none.
    qsizetype MatchAt(QStringView text) const;

private:
    QList<Row> m_rows;
    QHash<QString, qsizetype> m_rowOfKey;
    QHash<QString, QString> m_exact;   // one-letter forms
    QHash<QString, QString> m_folded;  // longer forms, case folded
    qsizetype m_longest = 0;
};

}  // namespace Exchange
