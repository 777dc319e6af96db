#pragma once

// Driving the recipe editor and its section picker from tests, as a user does.

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>
#include <functional>

#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

namespace EditorDriver {

// exec()'s result when the test had to close a dialog itself.
constexpr int ClosedByTest = 99;
constexpr int Information = UiServices::vbOKOnly + UiServices::vbInformation;
constexpr int Question = UiServices::vbYesNo + UiServices::vbQuestion;
constexpr int Exclamation = UiServices::vbExclamation;

template <class T>
inline T* Control(QWidget* form, const char* name) {
    T* control = form->findChild<T*>(QString::fromLatin1(name));
    if (!control) {
        qFatal("no control %s in %s", name, qPrintable(form->objectName()));
    }
    return control;
}
inline QLineEdit* Box(QWidget* form, const char* name) { return Control<QLineEdit>(form, name); }
inline QPushButton* Button(QWidget* form, const char* name) {
    return Control<QPushButton>(form, name);
}
inline QComboBox* Combo(QWidget* form, const char* name) { return Control<QComboBox>(form, name); }
inline QTreeWidget* List(QWidget* form, const char* name) {
    return Control<QTreeWidget>(form, name);
}
inline QTreeView* Tree(QWidget* form, const char* name) { return Control<QTreeView>(form, name); }
inline QPlainTextEdit* Memo(QWidget* form, const char* name) {
    return Control<QPlainTextEdit>(form, name);
}

// Shows the form modally as the program does and runs `drive` once it is up; a form that
// `drive` leaves open is closed from code afterwards (exec() then returns ClosedByTest).
inline int ShowModal(QDialog& form, const std::function<void(QDialog*)>& drive) {
    bool driven = false;
    QTimer::singleShot(0, &form, [&] {
        driven = true;
        if (QApplication::activeModalWidget() == &form) {
            drive(&form);
        } else {
            QTest::qFail("the form is not the active modal window", __FILE__, __LINE__);
        }
        if (form.isVisible()) {
            form.done(ClosedByTest);
        }
    });
    const int result = form.exec();
    if (!driven) {
        QTest::qFail("the form closed before the test could drive it", __FILE__, __LINE__);
    }
    return result;
}

// Opens the editor for a recipe (-1: a new one) and drives it.
inline int ShowEditor(qint32 recipeID, const std::function<void(frmNew*)>& drive) {
    frmNew editor;
    editor.lngRecipeID = recipeID;
    return ShowModal(editor, [&](QDialog* form) { drive(static_cast<frmNew*>(form)); });
}

// Runs `act` on the next modal window named `name` once it is up (queue it before the click
// that opens the window). A window that `act` leaves open is closed.
inline void WhenModal(const char* name, const std::function<void(QWidget*)>& act) {
    const QString expected = QString::fromLatin1(name);
    auto attempts = std::make_shared<int>(0);
    // The poll holds itself only weakly; each queued attempt holds it, so it goes with the last.
    auto poll = std::make_shared<std::function<void()>>();
    const std::weak_ptr<std::function<void()>> self = poll;
    *poll = [=] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal && modal->objectName() == expected) {
            act(modal);
            if (auto* dialog = qobject_cast<QDialog*>(modal); dialog && dialog->isVisible()) {
                dialog->done(ClosedByTest);
            }
        } else if (++*attempts < 200) {
            if (const auto again = self.lock()) {
                QTimer::singleShot(10, [again] { (*again)(); });
            }
        } else {
            QTest::qFail(qPrintable(QStringLiteral("%1 was not shown").arg(expected)), __FILE__,
                         __LINE__);
        }
    };
    QTimer::singleShot(0, [poll] { (*poll)(); });
}

inline QStringList EntryTexts(const QTreeWidget* list, int column = 0) {
    QStringList texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        texts << list->topLevelItem(i)->text(column);
    }
    return texts;
}

// The ingredient lines as "amount|unit|ingredient|unitID|ingredientID".
inline QStringList LineTexts(QWidget* form) {
    const QTreeWidget* list = List(form, "lstSectionIngredient");
    QStringList lines;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QStringList fields;
        for (int c = 0; c < 5; ++c) {
            fields << list->topLevelItem(i)->text(c);
        }
        lines << fields.join(QLatin1Char('|'));
    }
    return lines;
}

inline QStringList ComboTexts(const QComboBox* combo) {
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i) {
        texts << combo->itemText(i);
    }
    return texts;
}

inline QString SelectedText(const QTreeWidget* list) {
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    return selected.isEmpty() ? QStringLiteral("<none>") : selected.first()->text(0);
}

inline int SelectedRow(const QTreeWidget* list) {
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    return selected.isEmpty() ? -1 : list->indexOfTopLevelItem(selected.first());
}

// Clicks an entry of a list view with the mouse.
inline void ClickEntry(QTreeWidget* list, int row) {
    QTreeWidgetItem* item = list->topLevelItem(row);
    QVERIFY2(item, "no such entry");
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
    QCoreApplication::processEvents();  // the click is handled once the list is done with it
}

inline void DoubleClickEntry(QTreeWidget* list, QTreeWidgetItem* item) {
    list->scrollToItem(item);
    const QPoint at = list->visualItemRect(item).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
    QCoreApplication::processEvents();
}

inline void DoubleClickEntry(QTreeView* tree, const QModelIndex& index) {
    tree->scrollTo(index);
    const QPoint at = tree->visualRect(index).center();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
    QCoreApplication::processEvents();
}

inline int RowOf(const QTreeWidget* list, const QString& text) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (list->topLevelItem(i)->text(0) == text) {
            return i;
        }
    }
    return -1;
}

inline void ChooseCombo(QComboBox* combo, const QString& text) {
    const int index = combo->findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    combo->setCurrentIndex(index);
}

// Enters a new ingredient line as the user does: "Dodaj", amount, unit, ingredient, "Potrdi".
inline void AddLine(QWidget* form, const QString& amount, const QString& unit,
                    const QString& ingredient) {
    QTest::mouseClick(Button(form, "cmdSectionIngredientAdd"), Qt::LeftButton);
    QLineEdit* txtAmount = Box(form, "txtAmount");
    txtAmount->clear();
    QTest::keyClicks(txtAmount, amount);
    ChooseCombo(Combo(form, "cmbUnit"), unit);
    QTreeWidget* lstIngredient = List(form, "lstIngredient");
    const int row = RowOf(lstIngredient, ingredient);
    QVERIFY2(row >= 0, qPrintable(ingredient));
    ClickEntry(lstIngredient, row);
    QTest::mouseClick(Button(form, "cmdIngredientOk"), Qt::LeftButton);
}

inline void Click(QWidget* form, const char* button) {
    QPushButton* control = Button(form, button);
    QVERIFY2(control->isEnabled(), button);
    QTest::mouseClick(control, Qt::LeftButton);
}

inline void SetInstructions(QWidget* form, const QString& text) {
    Controls::SetMultiLineText(Memo(form, "txtInstructions"), text);
}
inline QString Instructions(QWidget* form) {
    return Controls::MultiLineText(Memo(form, "txtInstructions"));
}

// The messages shown, each as "style text".
inline QStringList Said(const MessageRecorder& messages) {
    QStringList said;
    for (const MessageRecorder::Message& message : messages.Messages()) {
        said << QString::number(message.style) + QLatin1Char(' ') + message.text;
        if (message.title != QLatin1String("Morvena")) {
            said << QStringLiteral("(title %1)").arg(message.title);
        }
    }
    return said;
}

inline QString ErrorLog() {
    QFile file(QStringLiteral("errors.log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()) : QString();
}

// The working state's sections as "title|instructions|amount unit ingredient, ...".
inline QStringList Stored(const frmNew* editor) {
    QStringList sections;
    const EditSectionArray& array = editor->WorkingSections();
    for (int i = 1; i < array.size(); ++i) {
        QStringList lines;
        for (int k = 1; k < array[i].Ingredients.size(); ++k) {
            const EditIngredient& line = array[i].Ingredients[k];
            lines << QStringLiteral("%1 %2 %3 (%4,%5)")
                         .arg(line.Amount)
                         .arg(line.UnitName, line.IngredientName)
                         .arg(line.UnitID)
                         .arg(line.IngredientID);
        }
        sections << array[i].Title + QLatin1Char('|') + array[i].Instructions + QLatin1Char('|') +
                        lines.join(QStringLiteral(", "));
    }
    return sections;
}
inline QTreeWidgetItem* Node(QTreeWidget* tree, const QString& key) {
    return tree->topLevelItemCount() ? modGeneral::SelectNodesItem(tree->topLevelItem(0), key)
                                     : nullptr;
}

// The node of a tree view's model with the key, among the nodes the model holds now (a node's
// children are read when the view first expands it); invalid when there is none.
inline QModelIndex Node(const QTreeView* tree, const QString& key,
                        const QModelIndex& parent = QModelIndex()) {
    const QAbstractItemModel* model = tree->model();
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        if (index.data(modGeneral::KeyRole).toString() == key) {
            return index;
        }
        if (const QModelIndex below = Node(tree, key, index); below.isValid()) {
            return below;
        }
    }
    return {};
}

// Expands every node of a tree view, each as the user would (its children are read then).
inline void ExpandAll(QTreeView* tree, const QModelIndex& parent = QModelIndex()) {
    for (int row = 0; row < tree->model()->rowCount(parent); ++row) {
        const QModelIndex index = tree->model()->index(row, 0, parent);
        tree->expand(index);
        ExpandAll(tree, index);
    }
}

// Answers the section picker with a double click on the section `key`.
inline void PickSection(const QString& key) {
    WhenModal("frmSelectSection", [key](QWidget* picker) {
        QTreeView* tree = Tree(picker, "tvSections");
        ExpandAll(tree);
        const QModelIndex node = Node(tree, key);
        QVERIFY2(node.isValid(), qPrintable(key));
        DoubleClickEntry(tree, node);
    });
}

// The editor's question before it saves, as the message recorder writes it.
inline const QString AskSave = QStringLiteral("36 Ali res želite shraniti recept?");

// A saved recipe's sections as "title|instructions|place", in place order.
inline QStringList SectionRows(qint32 recipeID) {
    return TestDatabase::Rows(
        QStringLiteral("SELECT [Section].title, [Section].instructions, [RecipeSection].place "
                       "FROM [RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID = "
                       "[Section].sectionID WHERE [RecipeSection].recipeID = %1 ORDER BY "
                       "[RecipeSection].place;")
            .arg(recipeID));
}

// A saved recipe's ingredient lines as "place|amount|unitID|ingredientID", by place and key.
inline QStringList LineRows(qint32 recipeID) {
    return TestDatabase::Rows(
        QStringLiteral("SELECT [RecipeSection].place, [SectionIngredient].amount, "
                       "[SectionIngredient].unitID, [SectionIngredient].ingredientID FROM "
                       "[RecipeSection] INNER JOIN [SectionIngredient] ON "
                       "[RecipeSection].sectionID = [SectionIngredient].sectionID WHERE "
                       "[RecipeSection].recipeID = %1 ORDER BY [RecipeSection].place, "
                       "[SectionIngredient].sectionIngredientID;")
            .arg(recipeID));
}

}  // namespace EditorDriver
