#include "exchange/RecipeMapping.h"

#include "core/Amount.h"
#include "core/modGeneral.h"
#include "exchange/IngredientText.h"

namespace Exchange {
namespace {

const QString LineBreak = QStringLiteral("\r\n");

// The table's units followed by the collection's own, each a unit of its own with its name as
// key and form: a collection's name that the table also has then stands for itself.
QList<Units::Row> UnitRows(const QStringList& collectionUnits) {
    QList<Units::Row> rows = Units::Common().Rows();
    for (const QString& name : collectionUnits) {
        rows.append({name, {name}, name, QString()});
    }
    return rows;
}

QString WithPreparation(const QString& ingredient, const QString& preparation) {
    const QString name = ingredient.trimmed();
    const QString more = preparation.trimmed();
    return more.isEmpty() ? name : name + QStringLiteral(", ") + more;
}

// The line read as a free text: all of it when the file kept it whole, or the amount and the
// text when the file gave an amount but no unit (a unit may start the text: "20 dag moke").
IngredientText ReadText(const Line& line, const Units& units) {
    if (line.amountText.isEmpty() && line.unit.isEmpty() && line.ingredient.isEmpty()) {
        return IngredientText::Read(line.original, units);
    }
    const QString text = WithPreparation(line.ingredient, line.preparation);
    return IngredientText::Read(line.amountText + QLatin1Char(' ') + text, units);
}

}  // namespace

RecipeMapping::RecipeMapping(const QStringList& collectionUnits)
    : m_units(UnitRows(collectionUnits)) {
    for (const QString& name : collectionUnits) {
        m_collection.insert(name.toCaseFolded(), name);
    }
}

MappedRecipe RecipeMapping::Map(const Recipe& recipe) const {
    MappedRecipe mapped;
    mapped.recipe.title = modGeneral::TrimBlanks(recipe.title.simplified());
    mapped.recipe.source = recipe.source.trimmed();
    for (const Section& section : recipe.sections) {
        mapped.recipe.sections.append(MapSection(section, mapped.notes));
    }
    QList<StoredSection>& sections = mapped.recipe.sections;
    if (sections.isEmpty()) {
        sections.append({QString(), QStringLiteral(" "), {}});
    }
    if (sections.size() == 1) {
        sections.first().title.clear();
    }
    for (StoredSection& section : sections) {
        if (section.title.isEmpty() && sections.size() > 1) {
            section.title = mapped.recipe.title;
        }
    }
    return mapped;
}

StoredSection RecipeMapping::MapSection(const Section& section, QList<LineNote>& notes) const {
    StoredSection stored;
    stored.title = modGeneral::TrimBlanks(section.title.simplified());
    QStringList unread;
    for (const Line& line : section.lines) {
        StoredLine storedLine;
        if (MapLine(line, storedLine, notes)) {
            stored.lines.append(storedLine);
        } else {
            unread.append(line.original);
        }
    }
    QStringList steps;
    for (const QString& step : section.steps) {
        if (!step.trimmed().isEmpty()) {
            steps.append(step.trimmed());
        }
    }
    QStringList parts;
    if (!unread.isEmpty()) {
        parts.append(unread.join(LineBreak));
    }
    if (!steps.isEmpty()) {
        parts.append(steps.join(LineBreak));
    }
    stored.instructions = parts.join(LineBreak + LineBreak);
    if (stored.instructions.isEmpty()) {
        stored.instructions = QStringLiteral(" ");
    }
    return stored;
}

bool RecipeMapping::MapLine(const Line& line, StoredLine& stored, QList<LineNote>& notes) const {
    const bool unitGiven = !line.unit.isEmpty();
    const IngredientText text = unitGiven ? IngredientText() : ReadText(line, m_units);
    const Quantity quantity = unitGiven ? Quantity::Read(line.amountText) : text.quantity;
    const QString ingredient = unitGiven ? WithPreparation(line.ingredient, line.preparation)
                                         : WithPreparation(text.ingredient, text.preparation);
    const bool whole = unitGiven ? !ingredient.isEmpty() : text.whole;
    if (quantity.IsEmpty() || !whole) {
        notes.append({quantity.IsEmpty() ? LineNote::NoAmount : LineNote::Unread, line.original});
        return false;
    }
    if (!quantity.rangeTo.isEmpty()) {
        notes.append({LineNote::Range, line.original});
    }
    stored.amount = Amount::Stored(quantity.value);
    stored.unit =
        unitGiven ? UnitName(line.unit, m_units.Key(line.unit)) : UnitName(text.unit, text.unitKey);
    stored.ingredient = ingredient;
    return true;
}

QString RecipeMapping::UnitName(const QString& written, const QString& key) const {
    QString form = written.trimmed();
    if (form.size() > 1 && form.endsWith(QLatin1Char('.'))) {
        form.chop(1);
    }
    const QString own = m_collection.value(form.toCaseFolded());
    if (!own.isEmpty()) {
        return own;
    }
    if (const Units::Row* row = m_units.Find(key)) {
        return row->name;
    }
    if (!form.isEmpty()) {
        return form;  // a unit the table does not know, as the file writes it
    }
    return m_units.Find(QStringLiteral("each"))->name;
}

}  // namespace Exchange
