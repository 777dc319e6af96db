#pragma once

#include <QString>
#include <QTreeWidgetItem>

// A node of the recipe tree: kind letter ("G", "T", "R"), row key and text, kept as they are and
// handed to the view on request. A tree of 100,000 recipes is built from these in a fraction of
// the time that nodes holding every value as a separate item value take. The node's key (the
// kind letter followed by the row key) is read under modGeneral::KeyRole as with any list entry;
// groups and subgroups are bold.
class TreeNode : public QTreeWidgetItem {
public:
    TreeNode(char kind, qint32 id, QString text);

    QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant& value) override;

private:
    QString m_text;
    qint32 m_id;
    char m_kind;
    bool m_keyChanged = false;  // a key set from outside replaces kind and row key
};
