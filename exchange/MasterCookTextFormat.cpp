#include "exchange/MasterCookTextFormat.h"

#include <QBuffer>
#include <QRegularExpression>

#include "core/AppError.h"
#include "exchange/IngredientText.h"
#include "exchange/LineReader.h"
#include "exchange/MasterCookParts.h"

namespace Exchange::MasterCookTextFormat {
namespace {

const QRegularExpression Banner(
    QStringLiteral(R"(^\s*\*\s*Exported\s+from\s+MasterCook\b.*\*\s*$)"),
    QRegularExpression::CaseInsensitiveOption);
const QRegularExpression HeaderField(
    QStringLiteral(R"(^\s*(Recipe\s+By|Serving\s+Size|Categories)\s*:(.*)$)"),
    QRegularExpression::CaseInsensitiveOption);
const QRegularExpression ColumnNames(QStringLiteral(R"(^\s*Amount\s+Measure\s+Ingredient)"),
                                     QRegularExpression::CaseInsensitiveOption);
const QRegularExpression ColumnRule(QStringLiteral(R"(^\s*-{3,}\s+-{3,}\s+-{3,}\s*$)"));
const QRegularExpression EndRule(QStringLiteral(R"(^\s*-(\s+-){3,}\s*$)"));
const QRegularExpression FieldLabel(QStringLiteral(R"(^(\S.*?)\s*:$)"));
const QRegularExpression OtherSource(QStringLiteral(R"(^S\((.*)\)$)"));
const QRegularExpression NutrientLinks(QStringLiteral(R"(^Nutr\.\s*Assoc\.\s*:)"),
                                       QRegularExpression::CaseInsensitiveOption);
const QRegularExpression NotesLabel(QStringLiteral(R"(^NOTES\s*:(.*)$)"));
const QRegularExpression CategorySeparator(QStringLiteral(R"(\t|\s{2,})"));

constexpr qsizetype TabStop = 8;

// Where the measure and the ingredient columns start.
struct Columns {
    qsizetype measure = 10;
    qsizetype ingredient = 24;
};

// The columns of the rule under the column names: where its runs of dashes start.
Columns ColumnsOf(const QString& rule) {
    QList<qsizetype> starts;
    for (qsizetype at = 0; at < rule.size(); ++at) {
        if (rule[at] == QLatin1Char('-') && (at == 0 || rule[at - 1] != QLatin1Char('-'))) {
            starts << at;
        }
    }
    return starts.size() < 3 ? Columns() : Columns{starts[1], starts[2]};
}

// The line with each TAB standing for blanks up to the next multiple of eight columns.
QString Expanded(const QString& line) {
    QString expanded;
    for (const QChar c : line) {
        if (c == QLatin1Char('\t')) {
            expanded += QString(TabStop - expanded.size() % TabStop, QLatin1Char(' '));
        } else {
            expanded += c;
        }
    }
    return expanded;
}

// True when a word of the line crosses the start of a column.
bool Crosses(const QString& line, qsizetype column) {
    return column > 0 && column < line.size() && !line[column - 1].isSpace() &&
           !line[column].isSpace();
}

Line IngredientLine(const QString& text, const Columns& columns) {
    const QString line = Expanded(text);
    if (Crosses(line, columns.measure) || Crosses(line, columns.ingredient)) {
        return IngredientText::Read(line.trimmed()).ToLine();
    }
    const QString amount = line.left(columns.measure).trimmed();
    const QString unit = line.mid(columns.measure, columns.ingredient - columns.measure).trimmed();
    const QString rest = line.mid(columns.ingredient).trimmed();
    const qsizetype mark = rest.indexOf(QLatin1String("--"));
    if (mark < 0) {
        return LineOfParts(amount, unit, rest, QString());
    }
    return LineOfParts(amount, unit, rest.left(mark).trimmed(), rest.mid(mark + 2).trimmed());
}

// Reads the lines of one recipe, those after its banner.
class RecipeText {
public:
    explicit RecipeText(const QStringList& lines) : m_lines(lines) {}

    Recipe Read() {
        ReadTitle();
        if (ReadHead()) {
            ReadIngredients();
        }
        ReadMethod();
        ReadNotes();
        m_recipe.source = m_sources.join(QStringLiteral("; "));
        m_recipe.yield = MasterCookParts::Yield(m_servings, m_yield);
        AddMethod(m_recipe, m_steps);
        return std::move(m_recipe);
    }

private:
    bool AtEnd() const { return m_at >= m_lines.size(); }
    QString Current() const { return m_lines[m_at].trimmed(); }

    void ReadTitle() {
        while (!AtEnd() && Current().isEmpty()) {
            ++m_at;
        }
        if (!AtEnd() && !HeaderField.match(Current()).hasMatch() &&
            !ColumnNames.match(Current()).hasMatch()) {
            m_recipe.title = Current();
            ++m_at;
        }
    }

    // The head's fields up to the rule under the column names; false when the method follows
    // without ingredients.
    bool ReadHead() {
        bool categories = false;  // the line before was of the categories
        for (; !AtEnd(); ++m_at) {
            const QString& line = m_lines[m_at];
            const QRegularExpressionMatch field = HeaderField.match(line);
            if (field.hasMatch()) {
                categories = TakeField(field.captured(1).simplified().toLower(), field.captured(2));
            } else if (categories && !Current().isEmpty() && line.front().isSpace()) {
                AddCategories(line);
            } else if (ColumnRule.match(line).hasMatch()) {
                m_columns = ColumnsOf(line);
                ++m_at;
                return true;
            } else if (!Current().isEmpty() && !ColumnNames.match(line).hasMatch()) {
                return false;
            } else {
                categories = false;
            }
        }
        return false;
    }

    // A field of the head; true for the categories.
    bool TakeField(const QString& name, const QString& value) {
        if (name == QLatin1String("recipe by")) {
            const QString author = MasterCookParts::Author(value);
            if (!author.isEmpty()) {
                m_sources << author;
            }
        } else if (name == QLatin1String("serving size")) {
            m_servings = value;
        } else {
            AddCategories(value);
        }
        return name == QLatin1String("categories");
    }

    void AddCategories(const QString& list) {
        for (const QString& category : list.split(CategorySeparator)) {
            if (!category.trimmed().isEmpty()) {
                m_recipe.categories << category.trimmed();
            }
        }
    }

    void ReadIngredients() {
        for (; !AtEnd() && !Current().isEmpty(); ++m_at) {
            MasterCookParts::AddIngredient(m_recipe, IngredientLine(m_lines[m_at], m_columns));
        }
    }

    void ReadMethod() {
        for (; !AtEnd() && !EndRule.match(m_lines[m_at]).hasMatch(); ++m_at) {
            const QString line = Current();
            if (line.isEmpty() || NutrientLinks.match(line).hasMatch()) {
                EndParagraph();
            } else if (StartsField()) {
                EndParagraph();
                ReadField(FieldLabel.match(line).captured(1));
            } else {
                m_paragraph << line;
            }
        }
        EndParagraph();
    }

    // A label alone on its line, with a quoted value on the next.
    bool StartsField() const {
        return FieldLabel.match(Current()).hasMatch() && m_at + 1 < m_lines.size() &&
               m_lines[m_at + 1].trimmed().startsWith(QLatin1Char('"'));
    }

    // The value of a field, on the lines after its label up to the closing quote.
    void ReadField(const QString& label) {
        QString value;
        while (m_at + 1 < m_lines.size() && !m_lines[m_at + 1].trimmed().isEmpty()) {
            ++m_at;
            value = value.isEmpty() ? Current() : value + QLatin1Char(' ') + Current();
            if (value.size() > 1 && value.endsWith(QLatin1Char('"'))) {
                break;
            }
        }
        value.remove(0, 1);
        if (value.endsWith(QLatin1Char('"'))) {
            value.chop(1);
        }
        TakeMethodField(label, value.trimmed());
    }

    void TakeMethodField(const QString& label, const QString& value) {
        const QString otherSource = OtherSource.match(label).captured(1).trimmed();
        if (label.compare(QLatin1String("Source"), Qt::CaseInsensitive) == 0) {
            m_sources << value;
        } else if (!otherSource.isEmpty()) {
            m_sources << otherSource + QStringLiteral(": ") + value;
        } else if (label.compare(QLatin1String("Yield"), Qt::CaseInsensitive) == 0) {
            m_yield = value;
        } else {
            m_steps << label + QStringLiteral(": ") + value;
        }
    }

    // After the rule: the paragraph of the notes.
    void ReadNotes() {
        bool notes = false;
        for (; !AtEnd(); ++m_at) {
            const QString line = Current();
            const QRegularExpressionMatch label = NotesLabel.match(line);
            if (label.hasMatch()) {
                EndParagraph();
                notes = true;
                m_paragraph << label.captured(1).trimmed();
            } else if (line.isEmpty() || NutrientLinks.match(line).hasMatch()) {
                EndParagraph();
                notes = false;
            } else if (notes) {
                m_paragraph << line;
            }
        }
        EndParagraph();
    }

    void EndParagraph() {
        m_paragraph.removeAll(QString());
        if (!m_paragraph.isEmpty()) {
            m_steps << m_paragraph.join(QLatin1Char(' '));
        }
        m_paragraph.clear();
    }

    const QStringList& m_lines;
    qsizetype m_at = 0;  // the line being read
    Recipe m_recipe;
    Columns m_columns;
    QStringList m_sources;
    QString m_servings;  // "Serving Size" as written
    QString m_yield;     // the "Yield" field
    QStringList m_steps;
    QStringList m_paragraph;  // the lines of the paragraph being read
};

// Gathers each recipe's lines and reads them when the next banner or the file's end comes.
class FileReader {
public:
    FileReader(const RecipeSink& sink, FileNotes& notes) : m_sink(sink), m_notes(notes) {}

    void Take(const QString& line, int number) {
        if (Banner.match(line).hasMatch()) {
            Finish();
            m_startLine = number;
        } else if (m_startLine > 0) {
            m_lines << line;
        } else {
            m_textOutside = m_textOutside || !line.trimmed().isEmpty();
        }
    }

    void Finish() {
        if (m_textOutside) {
            ++m_notes.notRecipes;
            m_textOutside = false;
        }
        if (m_startLine > 0) {
            HandOver(RecipeText(m_lines).Read(), m_startLine, m_sink, m_notes);
        }
        m_lines.clear();
        m_startLine = 0;
    }

private:
    const RecipeSink& m_sink;
    FileNotes& m_notes;
    int m_startLine = 0;  // the line of the banner of the recipe being gathered; 0 for none
    QStringList m_lines;
    bool m_textOutside = false;  // text before the first banner, not yet counted
};

}  // namespace

bool Recognizes(QByteArrayView start) {
    QString text = QString::fromLatin1(start).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    if (text.startsWith(QLatin1String("\xEF\xBB\xBF"))) {
        text.remove(0, 3);
    }
    if (text.trimmed().startsWith(QLatin1Char('<'))) {
        return false;
    }
    bool banner = false;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const QString field = HeaderField.match(line).captured(1).simplified();
        if (Banner.match(line).hasMatch()) {
            banner = true;
        } else if (banner && field.compare(QLatin1String("Recipe By"), Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes,
          const QString& encoding) {
    ErrorPath::PassOn("MasterCookTextFormat:Read", [&] {
        QBuffer buffer;
        buffer.setData(data);
        buffer.open(QIODevice::ReadOnly);
        LineReader lines(buffer, TextEncoding::Given(encoding), Encoding::Windows1252);
        FileReader reader(sink, notes);
        QString line;
        while (lines.Next(line)) {
            reader.Take(line, lines.LineNumber());
        }
        reader.Finish();
    });
}

}  // namespace Exchange::MasterCookTextFormat
