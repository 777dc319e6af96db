#include "collection/SampleDatabase.h"

#include <QFile>
#include <QHash>
#include <QList>
#include <QRegularExpression>

#include "core/AppError.h"
#include "core/database/modDatabase.h"

namespace SampleDatabase {
namespace {

struct Line {
    int amount = 0;
    QString unit;
    QString ingredient;
};
struct Section {
    QString title;  // null for the one untitled section of a recipe
    QList<Line> lines;
    QStringList steps;
};
struct Recipe {
    QString title;
    QString source;
    QList<Section> sections;
};
struct Type {
    QString name;
    QStringList description;
    QList<Recipe> recipes;
};
struct Group {
    QString name;
    QStringList description;
    QList<Type> types;
};
struct Collection {
    QList<QPair<QString, QString>> units;
    QList<QPair<QString, QString>> sources;
    QList<Group> groups;
};

[[noreturn]] void Malformed(int lineNumber, const QString& line) {
    ErrorPath::Raise(
        13, QStringLiteral("Vrstica %1 vzorčne zbirke ni pravilna: %2").arg(lineNumber).arg(line));
}

QPair<QString, QString> NameAndDescription(const QString& rest) {
    const qsizetype bar = rest.indexOf(QLatin1Char('|'));
    return bar < 0 ? qMakePair(rest.trimmed(), QString())
                   : qMakePair(rest.left(bar).trimmed(), rest.mid(bar + 1).trimmed());
}

Section& CurrentSection(Recipe& recipe) {
    if (recipe.sections.isEmpty()) {
        recipe.sections.append(Section{});
    }
    return recipe.sections.last();
}

Collection Parse(const QByteArray& text) {
    static const QRegularExpression ingredientLine(QStringLiteral(R"(^(\d+)\s+(\S+)\s+(.+)$)"));
    Collection collection;
    const QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
    for (int number = 1; number <= lines.size(); ++number) {
        const QString line = lines[number - 1].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        const qsizetype blank = line.indexOf(QLatin1Char(' '));
        const QString word = blank < 0 ? line : line.left(blank);
        const QString rest = blank < 0 ? QString() : line.mid(blank + 1).trimmed();
        Group* group = collection.groups.isEmpty() ? nullptr : &collection.groups.last();
        Type* type = group && !group->types.isEmpty() ? &group->types.last() : nullptr;
        Recipe* recipe = type && !type->recipes.isEmpty() ? &type->recipes.last() : nullptr;
        if (word == QLatin1String("UNIT")) {
            collection.units.append(NameAndDescription(rest));
        } else if (word == QLatin1String("SOURCE")) {
            collection.sources.append(NameAndDescription(rest));
        } else if (word == QLatin1String("GROUP")) {
            collection.groups.append(Group{rest, {}, {}});
        } else if (word == QLatin1String("TYPE") && group) {
            group->types.append(Type{rest, {}, {}});
        } else if (word == QLatin1String("DESC") && type && type->recipes.isEmpty()) {
            type->description.append(rest);
        } else if (word == QLatin1String("DESC") && group && group->types.isEmpty()) {
            group->description.append(rest);
        } else if (word == QLatin1String("RECIPE") && type) {
            type->recipes.append(Recipe{rest, {}, {}});
        } else if (word == QLatin1String("FROM") && recipe) {
            recipe->source = rest;
        } else if (word == QLatin1String("SECTION") && recipe) {
            recipe->sections.append(Section{rest, {}, {}});
        } else if (word == QLatin1String("ING") && recipe &&
                   ingredientLine.match(rest).hasMatch()) {
            const QRegularExpressionMatch match = ingredientLine.match(rest);
            CurrentSection(*recipe).lines.append(
                Line{match.captured(1).toInt(), match.captured(2), match.captured(3)});
        } else if (word == QLatin1String("STEP") && recipe) {
            CurrentSection(*recipe).steps.append(rest);
        } else {
            Malformed(number, line);
        }
    }
    return collection;
}

// Adds one row to a table through an empty updatable result set and returns its new key.
qint32 AddRow(const QString& table, const QString& keyField,
              const QList<QPair<QString, QVariant>>& fields) {
    Recordset rs =
        modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [") + table +
                                  QStringLiteral("] WHERE ") + keyField + QStringLiteral(" = 0;"));
    rs.AddNew();
    for (const auto& [name, value] : fields) {
        rs.SetField(name, value);
    }
    rs.Update();
    const qint32 key = rs.Long(keyField);
    rs.Close();
    return key;
}

qint32 AddNamed(const QString& table, const QString& name, const QString& description) {
    return AddRow(table, table.left(1).toLower() + table.mid(1) + QStringLiteral("ID"),
                  {{QStringLiteral("name"), name},
                   {QStringLiteral("description"), modDatabase::StrToNull(description)}});
}

class Loader {
public:
    void Load(const Collection& collection) {
        for (const auto& [name, description] : collection.units) {
            m_units.insert(name, AddNamed(QStringLiteral("Unit"), name, description));
        }
        for (const auto& [name, description] : collection.sources) {
            m_sources.insert(name, AddNamed(QStringLiteral("Source"), name, description));
        }
        for (const Group& group : collection.groups) {
            const qint32 groupID = AddNamed(QStringLiteral("Group"), group.name,
                                            group.description.join(QStringLiteral("\r\n")));
            for (const Type& type : group.types) {
                LoadType(groupID, type);
            }
        }
    }

private:
    void LoadType(qint32 groupID, const Type& type) {
        const qint32 typeID =
            AddRow(QStringLiteral("Type"), QStringLiteral("typeID"),
                   {{QStringLiteral("groupID"), groupID},
                    {QStringLiteral("name"), type.name},
                    {QStringLiteral("description"),
                     modDatabase::StrToNull(type.description.join(QStringLiteral("\r\n")))}});
        for (const Recipe& recipe : type.recipes) {
            LoadRecipe(typeID, recipe);
        }
    }

    void LoadRecipe(qint32 typeID, const Recipe& recipe) {
        QVariant sourceID;
        if (!recipe.source.isEmpty()) {
            if (!m_sources.contains(recipe.source)) {
                ErrorPath::Raise(13, QStringLiteral("Neznan vir: %1").arg(recipe.source));
            }
            sourceID = m_sources.value(recipe.source);
        }
        const qint32 recipeID = AddRow(QStringLiteral("Recipe"), QStringLiteral("recipeID"),
                                       {{QStringLiteral("typeID"), typeID},
                                        {QStringLiteral("sourceID"), sourceID},
                                        {QStringLiteral("title"), recipe.title}});
        for (int place = 1; place <= recipe.sections.size(); ++place) {
            LoadSection(recipeID, place, recipe.sections[place - 1]);
        }
    }

    void LoadSection(qint32 recipeID, int place, const Section& section) {
        const QString instructions = section.steps.join(QStringLiteral("\r\n"));
        const qint32 sectionID =
            AddRow(QStringLiteral("Section"), QStringLiteral("sectionID"),
                   {{QStringLiteral("title"), section.title.isNull() ? QVariant() : section.title},
                    {QStringLiteral("instructions"),
                     instructions.isEmpty() ? QStringLiteral(" ") : instructions}});
        AddRow(QStringLiteral("RecipeSection"), QStringLiteral("recipeSectionID"),
               {{QStringLiteral("recipeID"), recipeID},
                {QStringLiteral("sectionID"), sectionID},
                {QStringLiteral("place"), place}});
        for (const Line& line : section.lines) {
            if (!m_units.contains(line.unit)) {
                ErrorPath::Raise(13, QStringLiteral("Neznana enota: %1").arg(line.unit));
            }
            AddRow(QStringLiteral("SectionIngredient"), QStringLiteral("sectionIngredientID"),
                   {{QStringLiteral("sectionID"), sectionID},
                    {QStringLiteral("ingredientID"), IngredientID(line.ingredient)},
                    {QStringLiteral("unitID"), m_units.value(line.unit)},
                    {QStringLiteral("amount"), line.amount}});
        }
    }

    qint32 IngredientID(const QString& name) {
        if (!m_ingredients.contains(name)) {
            m_ingredients.insert(name, AddNamed(QStringLiteral("Ingredient"), name, QString()));
        }
        return m_ingredients.value(name);
    }

    QHash<QString, qint32> m_units;
    QHash<QString, qint32> m_sources;
    QHash<QString, qint32> m_ingredients;
};

}  // namespace

QByteArray BuiltInText() {
    QFile file(QStringLiteral(":/morvena/sample.txt"));
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

void Load(const QByteArray& text) {
    ErrorPath::PassOn("SampleDatabase:Load", [&] {
        const Collection collection = Parse(text);
        modDatabase::Transaction transaction;
        Loader().Load(collection);
        transaction.Commit();
        modDatabase::Execute(QStringLiteral("ANALYZE"));  // the query planner's statistics
    });
}

}  // namespace SampleDatabase
