#include "exchange/MealMasterFormat.h"

#include <QRegularExpression>

#include "core/AppError.h"
#include "exchange/IngredientText.h"
#include "exchange/LineReader.h"
#include "exchange/MealMasterLines.h"

namespace Exchange::MealMasterFormat {
namespace {

using MealMasterLines::Column;

const QRegularExpression HeaderField(
    QStringLiteral(R"(^\s*(Title|Categories|Servings|Yield)\s*:\s*(.*)$)"),
    QRegularExpression::CaseInsensitiveOption);

const QRegularExpression SourceLabel(
    QStringLiteral(R"(^(Source|From|Recipe\s+by|Quelle|Vir)\s*:\s*(\S.*)$)"),
    QRegularExpression::CaseInsensitiveOption);

// A paragraph that names the source: as a step, should more method follow, and as the source.
struct SourceParagraph {
    QString step;
    QString source;
};

QString Joined(const QString& first, const QString& second) {
    return second.isEmpty() ? first : first.isEmpty() ? second : first + QLatin1Char(' ') + second;
}

// Reads the lines of a file one by one and hands over each recipe at its last line.
class RecipeReader {
public:
    RecipeReader(const RecipeSink& sink, FileNotes& notes) : m_sink(sink), m_notes(notes) {}

    void Take(const QString& line, int number) {
        const QString clean = MealMasterLines::Clean(line);
        if (MealMasterLines::IsRecipeStart(clean)) {
            FinishBefore(number);
            Start(number);
        } else if (m_place == Place::Outside) {
            m_textOutside = m_textOutside || !clean.trimmed().isEmpty();
        } else if (MealMasterLines::IsRecipeEnd(clean)) {
            End();
        } else if (m_place != Place::Header || !TakeHeader(clean)) {
            TakeBody(clean);
        }
    }

    // The file ends.
    void Finish(int number) { FinishBefore(number + 1); }

private:
    enum class Place { Outside, Header, Ingredients, Method };

    // What is open when a recipe starts or the file ends: text outside recipes, or a recipe
    // that had no last line.
    void FinishBefore(int number) {
        if (m_place != Place::Outside && !m_recipe.title.isEmpty()) {
            Problem(m_startLine, QStringLiteral("recept »%1« nima zadnje vrstice; prebran je do "
                                                "vrstice %2")
                                     .arg(m_recipe.title)
                                     .arg(number - 1));
        }
        if (m_place != Place::Outside) {
            End();
        }
        if (m_textOutside) {
            ++m_notes.notRecipes;
            m_textOutside = false;
        }
    }

    void Start(int number) {
        m_recipe = Recipe();
        m_startLine = number;
        m_place = Place::Header;
    }

    void End() {
        FlushColumns();
        EndParagraph();
        QStringList sources;
        for (const SourceParagraph& paragraph : m_sources) {
            sources << paragraph.source;
        }
        m_sources.clear();
        m_recipe.source = sources.join(QStringLiteral("; "));
        SplitPreparations();
        DropEmptySections(m_recipe);
        m_place = Place::Outside;
        if (m_recipe.title.isEmpty()) {
            ++m_notes.notRecipes;
            Problem(m_startLine, QStringLiteral("recept brez naslova"));
            return;
        }
        m_sink(std::move(m_recipe));
        m_recipe = Recipe();
    }

    void Problem(int number, const QString& text) {
        m_notes.problems << QStringLiteral("vrstica %1: %2").arg(number).arg(text);
    }

    // A line of the recipe's head; false for the first line after it.
    bool TakeHeader(const QString& line) {
        if (line.trimmed().isEmpty()) {
            return true;
        }
        const QRegularExpressionMatch field = HeaderField.match(line);
        if (!field.hasMatch()) {
            m_place = Place::Ingredients;
            return false;
        }
        const QString name = field.captured(1).toLower();
        const QString value = field.captured(2).trimmed();
        if (name == QLatin1String("title")) {
            m_recipe.title = value;
        } else if (name == QLatin1String("categories")) {
            AddCategories(value);
        } else {
            m_recipe.yield = value;
        }
        return true;
    }

    void AddCategories(const QString& list) {
        for (const QString& category : list.split(QLatin1Char(','))) {
            if (!category.trimmed().isEmpty()) {
                m_recipe.categories << category.trimmed();
            }
        }
    }

    void TakeBody(const QString& line) {
        const QString heading = MealMasterLines::HeadingTitle(line);
        if (!heading.isEmpty()) {
            FlushColumns();
            EndParagraph();
            ReturnSourcesToMethod();
            m_recipe.sections.append(Section{heading, {}, {}});
            m_place = Place::Ingredients;
            return;
        }
        if (m_place == Place::Ingredients && TakeIngredients(line)) {
            return;
        }
        TakeMethod(line);
    }

    // A line in the ingredient list: ingredients, or a blank line; false for the method's first.
    bool TakeIngredients(const QString& line) {
        const auto row = MealMasterLines::ReadIngredientRow(line);
        if (row) {
            m_left << row->left;
            if (row->right) {
                m_right << *row->right;
            }
            return true;
        }
        FlushColumns();
        if (line.trimmed().isEmpty()) {
            return true;
        }
        m_place = Place::Method;
        return false;
    }

    // The ingredients of the lines since the last blank line or heading, column by column.
    void FlushColumns() {
        for (const Column& column : m_left + m_right) {
            AddColumn(column);
        }
        m_left.clear();
        m_right.clear();
    }

    void AddColumn(const Column& column) {
        Section& section = Current();
        if (column.continuation && !section.lines.isEmpty()) {
            Line& last = section.lines.last();
            last.original = Joined(last.original, column.original);
            last.ingredient = Joined(last.ingredient, column.text.mid(1).trimmed());
            return;
        }
        section.lines.append(
            Line{column.original, column.amountText, column.unit, column.text, {}});
    }

    void TakeMethod(const QString& line) {
        QString text = line.trimmed();
        if (text.startsWith(QLatin1Char(':'))) {
            EndParagraph();
            text = text.mid(1).trimmed();
        }
        if (text.isEmpty()) {
            EndParagraph();
            return;
        }
        const QRegularExpressionMatch label = SourceLabel.match(text);
        if (label.hasMatch()) {
            EndParagraph();
            m_sourceStart = label.captured(2).trimmed();
        }
        m_paragraph << text;
    }

    void EndParagraph() {
        if (m_paragraph.isEmpty()) {
            return;
        }
        const QString step = m_paragraph.join(QLatin1Char(' '));
        if (!m_sourceStart.isEmpty()) {
            const QString rest = m_paragraph.mid(1).join(QLatin1Char(' '));
            m_sources.append({step, Joined(m_sourceStart, rest)});
        } else {
            ReturnSourcesToMethod();
            Current().steps << step;
        }
        m_paragraph.clear();
        m_sourceStart.clear();
    }

    // Source paragraphs that more method follows are method after all.
    void ReturnSourcesToMethod() {
        for (const SourceParagraph& paragraph : m_sources) {
            Current().steps << paragraph.step;
        }
        m_sources.clear();
    }

    Section& Current() {
        if (m_recipe.sections.isEmpty()) {
            m_recipe.sections.append(Section());
        }
        return m_recipe.sections.last();
    }

    void SplitPreparations() {
        for (Section& section : m_recipe.sections) {
            for (Line& line : section.lines) {
                const QStringList parts = IngredientText::SplitPreparation(line.ingredient);
                line.ingredient = parts.at(0);
                line.preparation = parts.at(1);
            }
        }
    }

    const RecipeSink& m_sink;
    FileNotes& m_notes;
    Place m_place = Place::Outside;
    bool m_textOutside = false;  // text since the last recipe, not yet counted
    int m_startLine = 0;
    Recipe m_recipe;
    QList<Column> m_left;  // the columns of the ingredient lines not yet added
    QList<Column> m_right;
    QStringList m_paragraph;  // the lines of the method's paragraph being read
    QString m_sourceStart;    // the source named by the paragraph's first line, if it names one
    QList<SourceParagraph> m_sources;  // source paragraphs after the last method text
};

}  // namespace

bool Recognizes(QByteArrayView start) {
    bool recipeStarted = false;
    const QString text = QString::fromLatin1(start).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const QString field = HeaderField.match(line).captured(1);
        if (MealMasterLines::IsRecipeStart(line)) {
            recipeStarted = true;
        } else if (recipeStarted &&
                   field.compare(QLatin1String("title"), Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

void Read(QIODevice& device, const RecipeSink& sink, FileNotes& notes, const QString& encoding) {
    ErrorPath::PassOn("MealMasterFormat:Read", [&] {
        LineReader lines(device, TextEncoding::Given(encoding), Encoding::Cp437);
        RecipeReader reader(sink, notes);
        QString line;
        while (lines.Next(line)) {
            reader.Take(line, lines.LineNumber());
        }
        reader.Finish(lines.LineNumber());
    });
}

}  // namespace Exchange::MealMasterFormat
