// The look of a page's elements: what an element passes on to its content, the box of a block,
// and the element rules of the page's <style> blocks with the way each declaration applies.
#pragma once

#include <gumbo.h>

#include <QColor>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTextCharFormat>
#include <vector>

namespace PageDocument::detail {

// A length of the page's style rules: pixels, or a multiple of the element's font size.
struct Length {
    qreal value = 0;
    bool em = false;
    qreal Pixels(qreal fontPixels) const { return em ? value * fontPixels : value; }
};

// What an element passes on to its content (the inherited properties of CSS).
struct Style {
    QStringList families{QStringLiteral("serif")};
    qreal fontPixels = 16;  // a browser's "medium"
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    QTextCharFormat::VerticalAlignment verticalAlignment = QTextCharFormat::AlignNormal;
    QColor color;
    QString anchor;
    Qt::Alignment alignment = Qt::AlignLeft;
    bool preformatted = false;
    QTextCharFormat format;  // the character format of the values above

    bool SameLook(const Style& other) const {
        return families == other.families && fontPixels == other.fontPixels && bold == other.bold &&
               italic == other.italic && underline == other.underline && strike == other.strike &&
               verticalAlignment == other.verticalAlignment && color == other.color &&
               anchor == other.anchor;
    }

    // Makes `format` again from the values above.
    void MakeFormat();
};

// The box of a block-level element (not passed on).
struct Box {
    Length top;
    Length bottom;
    Length left;
};

struct Declaration {
    QString property;
    QString value;
};

// The element rules of the page's style blocks ("h1{font-size:22px;}"), in the order given.
// Rules with other selectors than element names do not apply to anything here.
class StyleSheet {
public:
    void Add(QString css);

    // Makes the rules ready for lookup; call after the last Add.
    void Finish();

    // The declarations for an element: those for every element first, then its own.
    QList<Declaration> For(const GumboNode* node) const;

private:
    static QList<Declaration> Declarations(const QString& block);
    QList<Declaration> ForName(const QString& name) const;

    QHash<QString, QList<Declaration>> m_rules;
    std::vector<QList<Declaration>> m_byTag;
};

// The alignment a text-align value (or an align attribute) names; `otherwise` for any other
// value.
Qt::Alignment AlignmentOf(const QString& value, Qt::Alignment otherwise);

// One declaration of the page's rules on an element whose parent passes on `parent`.
void ApplyDeclaration(const Declaration& d, const Style& parent, Style& style, Box& box);

}  // namespace PageDocument::detail
