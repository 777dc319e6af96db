#include "display/modDisplay.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "core/Amount.h"
#include "core/AppError.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace modDisplay {
namespace {

using modDatabase::GetRecordset;
using modDatabase::NullToStr;

QString PageHead(const QString& title, bool withTableRule) {
    return QStringLiteral("<html><head><title>") + title +
           QStringLiteral(
               "</title>"
               "<meta http-equiv=\"Content-Type\" "
               "content=\"text/html; charset=windows-1250\">"
               "<style type=\"text/css\"><!--"
               "body{font-family:verdana;font-size:12px;}"
               "h1{font-size:22px;}"
               "h2{font-size:18px;}"
               "h3{font-size:14px;margin-bottom:5px;}") +
           (withTableRule ? QStringLiteral("table{font-family:verdana;font-size:12px;}")
                          : QString()) +
           QStringLiteral("--></style></head><body>");
}

// The lines of every section of a recipe in the order of their keys, the order in which the
// cook typed them.
Recordset TypedLines(qint32 recipeID) {
    return GetRecordset(
        QStringLiteral(
            "SELECT [SectionIngredient].sectionID, [SectionIngredient].amount, [Unit].name AS "
            "unitName, [Ingredient].name AS ingredientName FROM (([RecipeSection] INNER JOIN "
            "[SectionIngredient] ON [RecipeSection].sectionID = [SectionIngredient].sectionID) "
            "INNER JOIN [Ingredient] ON [SectionIngredient].ingredientID = "
            "[Ingredient].ingredientID) INNER JOIN [Unit] ON [SectionIngredient].unitID = "
            "[Unit].unitID WHERE [RecipeSection].recipeID = ") +
        QString::number(recipeID) +
        QStringLiteral(" ORDER BY [SectionIngredient].sectionIngredientID;"));
}

QString IngredientLines(const QVariant& sectionID, const Recordset& typed) {
    Recordset rs = GetRecordset(
        QStringLiteral(
            "SELECT [SectionIngredient].sectionID, [SectionIngredient].amount, [Unit].name AS "
            "unitName, [Ingredient].name AS ingredientName FROM ([SectionIngredient] INNER JOIN "
            "[Ingredient] ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) INNER "
            "JOIN [Unit] ON [SectionIngredient].unitID = [Unit].unitID WHERE sectionID = ") +
        NullToStr(sectionID));
    // The statement names no order, and a database's planner may join the lines in any order:
    // by ingredient or by unit (a small collection, or one whose statistics say so), or as they
    // come from a hash. The lines are shown as the cook typed them: in the order of their keys.
    rs.Arrange(typed, {QStringLiteral("sectionID"), QStringLiteral("amount"),
                       QStringLiteral("unitName"), QStringLiteral("ingredientName")});
    QString lines;
    for (; !rs.Eof(); rs.MoveNext()) {
        lines += Amount::PageText(rs.Fields(QStringLiteral("amount"))) + QLatin1Char(' ') +
                 NullToStr(rs.Fields(QStringLiteral("unitName"))) + QLatin1Char(' ') +
                 NullToStr(rs.Fields(QStringLiteral("ingredientName"))) + QStringLiteral("<br>");
    }
    rs.Close();
    return lines;
}

QString Sections(qint32 recipeID) {
    Recordset rs = GetRecordset(
        QStringLiteral("SELECT [RecipeSection].recipeID, [Section].sectionID, [Section].title, "
                       "[Section].instructions, [RecipeSection].place FROM [RecipeSection] INNER "
                       "JOIN [Section] ON [RecipeSection].sectionID = [Section].sectionID WHERE "
                       "recipeID = ") +
        QString::number(recipeID) + QStringLiteral(" ORDER BY place;"));
    QString page;
    std::optional<Recordset> typed;  // read with the first section
    for (; !rs.Eof(); rs.MoveNext()) {
        if (!typed) {
            typed = TypedLines(recipeID);
        }
        const QVariant title = rs.Fields(QStringLiteral("title"));
        if (!title.isNull()) {
            page += QStringLiteral("<h2>") + title.toString() + QStringLiteral("</h2>");
        }
        page += QStringLiteral("<h3>Sestavine:</h3>");
        page += IngredientLines(rs.Fields(QStringLiteral("sectionID")), *typed);
        const QString instructions =
            modGeneral::TrimBlanks(NullToStr(rs.Fields(QStringLiteral("instructions"))));
        if (!instructions.isEmpty()) {
            page += QStringLiteral("<h3>Potek dela:</h3>") +
                    QString(instructions).replace(QStringLiteral("\r\n"), QStringLiteral("<br>"));
        }
    }
    rs.Close();
    return page;
}

QString RecipeRows(const QString& typeID) {
    Recordset rs =
        GetRecordset(QStringLiteral("SELECT title, recipeID FROM [Recipe] WHERE typeID = ") +
                     typeID + QStringLiteral(" ORDER BY title;"));
    QString rows = QStringLiteral("<table width=\"100%\" border=\"0\">");
    for (; !rs.Eof(); rs.MoveNext()) {
        rows += QStringLiteral("<tr><td>") + NullToStr(rs.Fields(QStringLiteral("title"))) +
                QStringLiteral("</td><td align=\"right\">") +
                NullToStr(rs.Fields(QStringLiteral("recipeID"))) + QStringLiteral("</td></tr>");
    }
    rs.Close();
    return rows;
}

}  // namespace

QString RecipePage(qint32 recipeID) {
    const QString id = QString::number(recipeID);
    Recordset rs = GetRecordset(
        QStringLiteral("SELECT [Recipe].recipeID, [Recipe].title, [Type].name AS typeName, "
                       "[Group].name AS groupName, [Source].name AS sourceName FROM (([Recipe] "
                       "INNER JOIN [Type] ON [Recipe].typeID = [Type].typeID) INNER JOIN [Group] "
                       "ON [Type].groupID = [Group].groupID) LEFT OUTER JOIN [Source] ON "
                       "[Recipe].sourceID = [Source].sourceID WHERE recipeID = ") +
        id + QStringLiteral(";"));
    const QString title = rs.Text(QStringLiteral("Title"));
    const QString typeName = rs.Text(QStringLiteral("TypeName"));
    const QString groupName = rs.Text(QStringLiteral("groupName"));
    const QVariant sourceName = rs.Fields(QStringLiteral("sourceName"));
    rs.Close();

    QString page = PageHead(id + QStringLiteral(" - ") + title, false);
    page += groupName + QStringLiteral(" - ") + typeName + QStringLiteral("<br>Recept št. ") + id +
            QStringLiteral("<br>");
    if (!sourceName.isNull()) {
        page += QStringLiteral("Vir: ") + sourceName.toString();
    }
    page += QStringLiteral("<h1>") + title + QStringLiteral("</h1>");
    page += Sections(recipeID);
    page += QStringLiteral("</table></body></html>");
    return page;
}

QString TypePage(qint32 typeID) {
    const QString id = QString::number(typeID);
    Recordset rs = GetRecordset(
        QStringLiteral("SELECT [Group].name AS groupName, [Type].name as typeName, "
                       "[Type].description FROM [Type] INNER JOIN [Group] ON [Type].groupID = "
                       "[Group].groupID WHERE [Type].typeID = ") +
        id + QStringLiteral(";"));
    const QString title = NullToStr(rs.Fields(QStringLiteral("groupName"))) +
                          QStringLiteral(" - ") + NullToStr(rs.Fields(QStringLiteral("typeName")));
    const QString description = NullToStr(rs.Fields(QStringLiteral("description")));
    rs.Close();

    QString page = PageHead(title, true);
    page += QStringLiteral("<h1>") + title + QStringLiteral("</h1>") + description;
    page += RecipeRows(id);
    page += QStringLiteral("</table></body></html>");
    return page;
}

QString GroupPage(qint32 groupID) {
    const QString id = QString::number(groupID);
    Recordset rs =
        GetRecordset(QStringLiteral("SELECT name, description FROM [Group] WHERE groupID = ") + id +
                     QStringLiteral(";"));
    const QString title = rs.Text(QStringLiteral("name"));
    const QString description = NullToStr(rs.Fields(QStringLiteral("description")));
    rs.Close();

    QString page = PageHead(title, true);
    page += QStringLiteral("<h1>") + title + QStringLiteral("</h1>") + description;
    Recordset types = GetRecordset(
        QStringLiteral("SELECT typeID, name, description FROM [Type] WHERE groupID = ") + id +
        QStringLiteral(" ORDER BY name;"));
    for (; !types.Eof(); types.MoveNext()) {
        page += QStringLiteral("<h2>") + NullToStr(types.Fields(QStringLiteral("name"))) +
                QStringLiteral("</h1>") + NullToStr(types.Fields(QStringLiteral("description")));
        page += RecipeRows(NullToStr(types.Fields(QStringLiteral("typeID"))));
        page += QStringLiteral("</table>");
    }
    types.Close();
    page += QStringLiteral("</body></html>");
    return page;
}

void WriteDisplayFile(const QString& page) {
    // Written into a new file of the owner's only, made beside the display file under a name
    // that did not exist (nothing planted there is opened or followed), then renamed over the
    // display file: a link planted at its name is replaced, never written through, and a reader
    // sees the old page or the new one, never half a page. A failure leaves the old page.
    const QByteArray target = QFile::encodeName(modGeneral::TempFilename);
    QByteArray temporary = target + ".XXXXXX";
    const auto fail = [&](int error) {
        ::unlink(temporary.constData());
        ErrorPath::Raise(75, QStringLiteral("Path/File access error: %1")
                                 .arg(QString::fromLocal8Bit(std::strerror(error))));
    };
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        ErrorPath::Raise(75, QStringLiteral("Path/File access error: %1")
                                 .arg(QString::fromLocal8Bit(std::strerror(errno))));
    }
    const QByteArray bytes = Windows1250::Encode(page);
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            const int error = n < 0 ? errno : ENOSPC;
            ::close(fd);
            fail(error);
        }
        done += n;
    }
    if (::close(fd) != 0 || ::rename(temporary.constData(), target.constData()) != 0) {
        fail(errno);
    }
}

void DisplayRecipe(qint32 recipeID) {
    ErrorPath::PassOn("modDisplay:DisplayRecipe", [&] { WriteDisplayFile(RecipePage(recipeID)); });
}

void DisplayType(qint32 typeID) {
    ErrorPath::PassOn("modDisplay:DisplayType", [&] { WriteDisplayFile(TypePage(typeID)); });
}

void DisplayGroup(qint32 groupID) {
    ErrorPath::PassOn("modDisplay:DisplayGroup", [&] { WriteDisplayFile(GroupPage(groupID)); });
}

}  // namespace modDisplay
