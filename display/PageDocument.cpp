#include "display/PageDocument.h"

#include <gumbo.h>

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>
#include <algorithm>
#include <memory>

#include "core/Windows1250.h"
#include "display/PageBuilder.h"
#include "display/PageRows.h"
#include "display/PageStyle.h"
#include "display/PageTables.h"

// The page is parsed here and handed over: PageElements and PageStyle give each element its look,
// and the Builder (PageBuilder, PageTables) lays the tree out in the document.
namespace PageDocument {
namespace {

// The text of an element's text children as they stand (a style block).
QString RawText(const GumboNode* element) {
    QString text;
    const GumboVector& children = element->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type == GUMBO_NODE_TEXT || child->type == GUMBO_NODE_WHITESPACE) {
            text += QString::fromUtf8(child->v.text.text);
        }
    }
    return text;
}

// The style blocks of the whole page, in order, and its title (the first title element), down
// to the depth to which the page keeps its elements.
void CollectHead(const GumboNode* node, detail::StyleSheet& sheet, QString& title, int depth = 0) {
    if (node->type != GUMBO_NODE_ELEMENT || depth > detail::MostDepth) {
        return;
    }
    const GumboTag tag = node->v.element.tag;
    if (tag == GUMBO_TAG_STYLE) {
        sheet.Add(RawText(node));
        return;
    }
    if (tag == GUMBO_TAG_TITLE) {
        if (title.isNull()) {
            title = RawText(node).simplified();
        }
        return;
    }
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        CollectHead(static_cast<const GumboNode*>(children.data[i]), sheet, title, depth + 1);
    }
}

// A change to the formats of a document that is laid out is laid out again at once, block by
// block, all the way down: fitting a page of ten thousand rows in a view cost six times the
// fitting itself. With the page size held at nothing a change only drops the layouts of its
// blocks; when the size comes back the document is laid out lazily, from the top, as a view
// does with a document it takes.
class LayoutPause {
public:
    explicit LayoutPause(QTextDocument& document)
        : m_document(document), m_pageSize(document.pageSize()) {
        m_document.setPageSize(QSizeF(0, 0));
    }
    ~LayoutPause() { m_document.setPageSize(m_pageSize); }
    LayoutPause(const LayoutPause&) = delete;
    LayoutPause& operator=(const LayoutPause&) = delete;

private:
    QTextDocument& m_document;
    const QSizeF m_pageSize;
};

// The page of its text in UTF-8.
void BuildUtf8(QTextDocument& document, const QByteArray& utf8) {
    std::unique_ptr<GumboOutput, void (*)(GumboOutput*)> output(
        gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), size_t(utf8.size())),
        [](GumboOutput* parsed) { gumbo_destroy_output(&kGumboDefaultOptions, parsed); });
    detail::StyleSheet sheet;
    QString title;
    CollectHead(output->root, sheet, title);
    sheet.Finish();

    const bool undo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.setDocumentMargin(8);  // the body's margin
    document.setMetaInformation(QTextDocument::DocumentTitle, title);
    const bool quirks =
        output->document->v.document.doc_type_quirks_mode != GUMBO_DOCTYPE_NO_QUIRKS;
    detail::Builder(document, quirks).Run(output->root, sheet);
    document.setUndoRedoEnabled(undo);
}

}  // namespace

void FitWidth(QTextDocument& document, qreal textWidth) {
    const qreal room = textWidth - 2 * document.documentMargin();
    const LayoutPause pause(document);
    detail::WrapLongRows(document, room);
    QTextCursor run(&document);
    bool inRun = false;
    qreal runMargins = 0;
    const auto endRun = [&](const QTextBlock& last) {
        QTextBlockFormat tabs;
        tabs.setTabPositions(
            {QTextOption::Tab(std::max<qreal>(room - runMargins, 0), QTextOption::RightTab)});
        run.setPosition(last.position(), QTextCursor::KeepAnchor);
        run.mergeBlockFormat(tabs);
        inRun = false;
    };
    QTextBlock previous;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat format = block.blockFormat();
        const bool row = format.boolProperty(detail::RowProperty);
        const qreal margins = format.leftMargin() + format.rightMargin();
        if (inRun && (!row || margins != runMargins)) {
            endRun(previous);
        }
        if (row && !inRun) {
            run.setPosition(block.position());
            runMargins = margins;
            inRun = true;
        }
        previous = block;
    }
    if (inRun) {
        endRun(previous);
    }
}

void Build(QTextDocument& document, const QString& html) { BuildUtf8(document, html.toUtf8()); }

void BuildFromBytes(QTextDocument& document, const QByteArray& bytes) {
    // The decoded text goes before the parse, which needs some fifteen times the page's size.
    BuildUtf8(document, Windows1250::Decode(bytes).toUtf8());
}

}  // namespace PageDocument
