#include "exchange/SchemaOrgSections.h"

#include <QJsonArray>
#include <QJsonObject>

#include "exchange/HtmlText.h"
#include "exchange/SchemaOrgJson.h"

namespace Exchange::SchemaOrgSections {
namespace {

using SchemaOrgJson::PlainText;
using SchemaOrgJson::Property;

// Adds a text to the group at the end when it is untitled or a heading that the texts after it
// join, else starts an untitled group.
void AddUntitled(QList<Group>& groups, const QString& text) {
    if (text.isEmpty()) {
        return;
    }
    if (groups.isEmpty() || !(groups.last().title.isEmpty() || groups.last().open)) {
        groups.append(Group());
    }
    groups.last().texts.append(text);
}

// The members of a group object: its "itemListElement", or for an ingredient group its own
// "recipeIngredient"; undefined for an object that is no group.
QJsonValue GroupMembers(const QJsonObject& object) {
    const QJsonValue members = Property(object, QStringLiteral("itemListElement"));
    return members.isUndefined() ? Property(object, QStringLiteral("recipeIngredient")) : members;
}

// The text of one ingredient or step given as an object.
QString ObjectText(const QJsonObject& object) {
    const QString text = PlainText(Property(object, QStringLiteral("text")));
    return text.isEmpty() ? PlainText(Property(object, QStringLiteral("name"))) : text;
}

// A list as a JSON array; a single value as a list of one.
QJsonArray AsList(const QJsonValue& value) {
    return value.isArray() ? value.toArray() : QJsonArray{value};
}

void AddIngredients(QList<Group>& groups, const QJsonValue& value);

void AddIngredientObject(QList<Group>& groups, const QJsonObject& object) {
    const QJsonValue members = GroupMembers(object);
    if (members.isUndefined()) {
        AddUntitled(groups, ObjectText(object));
        return;
    }
    QList<Group> inner;
    AddIngredients(inner, members);
    Group group{PlainText(Property(object, QStringLiteral("name"))), QStringList()};
    for (const Group& part : inner) {
        group.texts += part.texts;
    }
    if (!group.texts.isEmpty()) {
        groups.append(group);
    }
}

// An ingredient text that ends with a colon ("Dipping Sauce:") heads the ingredients after it.
void AddIngredientText(QList<Group>& groups, const QString& text) {
    if (text.size() > 1 && text.endsWith(u':')) {
        groups.append(Group{text.chopped(1).trimmed(), QStringList(), true});
    } else {
        AddUntitled(groups, text);
    }
}

void AddIngredients(QList<Group>& groups, const QJsonValue& value) {
    if (value.isString()) {
        for (const QString& line : HtmlText::Lines(HtmlText::OfFragment(value.toString()))) {
            AddIngredientText(groups, line);
        }
        return;
    }
    for (const QJsonValue member : AsList(value)) {
        if (member.isObject()) {
            AddIngredientObject(groups, member.toObject());
        } else if (member.isArray()) {
            AddIngredients(groups, member);
        } else {
            AddIngredientText(groups, PlainText(member));
        }
    }
}

void AddSteps(QList<Group>& groups, const QJsonValue& value);

// A HowToSection (or an ItemList) and its steps; steps of sections inside it join it.
void AddStepGroup(QList<Group>& groups, const QJsonObject& object, const QJsonValue& members) {
    const QString title = PlainText(Property(object, QStringLiteral("name")));
    QList<Group> inner;
    AddSteps(inner, members);
    if (title.isEmpty()) {
        for (const Group& part : inner) {
            for (const QString& step : part.texts) {
                AddUntitled(groups, step);
            }
        }
        return;
    }
    Group group{title, QStringList()};
    for (const Group& part : inner) {
        group.texts += part.texts;
    }
    if (!group.texts.isEmpty()) {
        groups.append(group);
    }
}

// A step, or a section of steps; a step whose text is made of smaller steps (HowToDirection)
// stands for those.
void AddStepObject(QList<Group>& groups, const QJsonObject& object) {
    const QJsonValue members = Property(object, QStringLiteral("itemListElement"));
    const QString text = ObjectText(object);
    if (members.isUndefined()) {
        AddUntitled(groups, text);
    } else if (!SchemaOrgJson::HasType(object, QStringLiteral("HowToStep"))) {
        AddStepGroup(groups, object, members);
    } else if (text.isEmpty()) {
        AddSteps(groups, members);
    } else {
        AddUntitled(groups, text);
    }
}

void AddSteps(QList<Group>& groups, const QJsonValue& value) {
    if (value.isString()) {
        for (const QString& line : HtmlText::Lines(HtmlText::OfFragment(value.toString()))) {
            AddUntitled(groups, line);
        }
        return;
    }
    for (const QJsonValue member : AsList(value)) {
        if (member.isObject()) {
            AddStepObject(groups, member.toObject());
        } else if (member.isArray()) {
            AddSteps(groups, member);
        } else {
            AddUntitled(groups, PlainText(member));
        }
    }
}

Section FromIngredients(const Group& group) {
    Section section;
    section.title = group.title;
    for (const QString& text : group.texts) {
        Line line;
        line.original = text;
        section.lines.append(line);
    }
    return section;
}

int FindTitled(const QList<Section>& sections, const QString& title) {
    for (int i = 0; i < sections.size(); ++i) {
        if (sections[i].title.compare(title, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

int FindUntitled(const QList<Section>& sections, bool withoutSteps) {
    for (int i = 0; i < sections.size(); ++i) {
        if (sections[i].title.isEmpty() && !(withoutSteps && !sections[i].steps.isEmpty())) {
            return i;
        }
    }
    return -1;
}

void AddTitledSteps(QList<Section>& sections, const Group& group) {
    int index = FindTitled(sections, group.title);
    if (index < 0) {
        index = FindUntitled(sections, true);
        if (index >= 0) {
            sections[index].title = group.title;
        }
    }
    if (index < 0) {
        sections.append(Section{group.title, {}, {}});
        index = int(sections.size()) - 1;
    }
    sections[index].steps += group.texts;
}

void AddUntitledSteps(QList<Section>& sections, const Group& group) {
    int index = FindUntitled(sections, false);
    if (index < 0 && !sections.isEmpty()) {
        index = int(sections.size()) - 1;
    }
    if (index < 0) {
        sections.append(Section());
        index = 0;
    }
    sections[index].steps += group.texts;
}

}  // namespace

QList<Group> IngredientGroups(const QJsonValue& ingredients) {
    QList<Group> groups;
    AddIngredients(groups, ingredients);
    return groups;
}

QList<Group> InstructionGroups(const QJsonValue& instructions) {
    QList<Group> groups;
    AddSteps(groups, instructions);
    return groups;
}

QList<Section> Combine(const QList<Group>& ingredients, const QList<Group>& instructions) {
    QList<Section> sections;
    for (const Group& group : ingredients) {
        sections.append(FromIngredients(group));
    }
    for (const Group& group : instructions) {
        if (group.title.isEmpty()) {
            AddUntitledSteps(sections, group);
        } else {
            AddTitledSteps(sections, group);
        }
    }
    QList<Section> kept;
    for (const Section& section : sections) {
        if (!section.lines.isEmpty() || !section.steps.isEmpty()) {
            kept.append(section);
        }
    }
    return kept;
}

}  // namespace Exchange::SchemaOrgSections
