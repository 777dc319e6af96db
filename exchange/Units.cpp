#include "exchange/Units.h"

#include <algorithm>

namespace Exchange {
namespace {

// Key, then every form that writes it, separated by "|". MealMaster's two-letter codes are here
// too ("tb", "ts", "pn", "ds", "cn", "pk", ...), except its "x" (per serving), which in a free
// text is the "x" of "2 x 250 g". Sizes are units only as MealMaster's codes sm, md and lg:
// "2 large eggs" has no unit.
const char* const CommonTable[] = {
    "cup|c|C|cup|cups|Tasse|Tassen|skodelica|skodelici|skodelice|skodelic|skodelico",
    "tablespoon|T|tb|tbs|tbsp|tbsps|tbl|tblsp|tablespoon|tablespoons|EL|Essl|Esslöffel|"
    "žlica|žlici|žlice|žlic|žlico|jedilna žlica|jedilni žlici|jedilne žlice|jedilnih žlic",
    "teaspoon|t|ts|tsp|tsps|teaspoon|teaspoons|TL|Teel|Teelöffel|"
    "žlička|žlički|žličke|žličk|žličko|kavna žlička|kavni žlički|kavne žličke|kavnih žličk",
    "pound|lb|lbs|pound|pounds|Pfund",
    "ounce|oz|ozs|ounce|ounces|Unze|Unzen",
    "fluid ounce|fl|fl oz|fl. oz|floz|fluid ounce|fluid ounces",
    "pint|pt|pint|pints",
    "quart|qt|quart|quarts",
    "gallon|ga|gal|gallon|gallons",
    "milligram|mg|milligram|milligrams|miligram|miligramov",
    "decigram|dg",
    "decagram|dag|dkg|dekagram|dekagrama|dekagrame|dekagramov",
    "gram|g|gr|gram|grams|gramme|grammes|Gramm|grama|grami|gramov",
    "kilogram|kg|kilo|kilos|kilogram|kilograms|Kilogramm|kilograma|kilogrami|kilogramov",
    "millilitre|ml|millilitre|millilitres|milliliter|milliliters|mililiter|mililitra|"
    "mililitri|mililitrov",
    "centilitre|cl|centilitre|centilitres|centiliter|centiliters",
    "decilitre|dl|decilitre|decilitres|deciliter|deciliters|decilitra|decilitri|decilitrov",
    "litre|l|L|lt|ltr|litre|litres|liter|liters|Liter|litra|litri|litrov",
    "cubic centimetre|cb|cc|ccm",
    "pinch|pn|pinch|pinches|Prise|Prisen|ščepec|ščepca|ščepci|ščepcev",
    "dash|ds|dash|dashes|Spritzer",
    "drop|dr|drop|drops|Tropfen|kapljica|kapljice|kapljic|kaplja|kaplje|kapelj",
    "each|ea|each|Stück|Stk|kos|kosa|kosi|kosov",
    "package|pk|pkg|pkgs|package|packages|pack|packs|packet|packets|Packung|Packungen|Pck|"
    "Päckchen|paket|paketa|paketi|paketov|zavitek|zavitka|zavitki|zavitkov|vrečka|vrečke|"
    "vrečk|vrečko",
    "can|cn|can|cans|tin|tins|Dose|Dosen|pločevinka|pločevinke|pločevink|konzerva|konzerve|"
    "konzerv",
    "jar|jar|jars|Glas|kozarec|kozarca|kozarci|kozarcev",
    "bottle|bottle|bottles|Flasche|Flaschen|steklenica|steklenice|steklenic",
    "carton|ct|carton|cartons",
    "bunch|bn|bunch|bunches|Bund|šop|šopa|šopi|šopek|šopka|šopki",
    "slice|sl|slice|slices|Scheibe|Scheiben|rezina|rezine|rezin|rezino",
    "clove|clove|cloves|Zehe|Zehen|strok|stroka|stroki|strokov",
    "stick|stick|sticks",
    "sprig|sprig|sprigs|Zweig|Zweige|vejica|vejice|vejic",
    "piece|piece|pieces|pc|pcs",
    "handful|handful|handfuls|pest|peščica|peščice",
    "centimetre|cm|centimetre|centimetres|centimeter|centimeters",
    "millimetre|mm",
    "inch|inch|inches",
    "small|sm",
    "medium|md",
    "large|lg",
};

QString Fold(QStringView form) { return form.toString().toCaseFolded(); }

QList<Units::Row> CommonRows() {
    QList<Units::Row> rows;
    for (const char* line : CommonTable) {
        QStringList fields = QString::fromUtf8(line).split(QLatin1Char('|'));
        const QString key = fields.takeFirst();
        rows.append({key, fields});
    }
    return rows;
}

QStringView WithoutPeriod(QStringView written) {
    return written.size() > 1 && written.endsWith(QLatin1Char('.')) ? written.chopped(1) : written;
}

}  // namespace

Units::Units(const QList<Row>& rows) {
    for (const Row& row : rows) {
        for (const QString& form : row.forms) {
            if (form.size() == 1) {
                m_exact.insert(form, row.key);
            } else {
                m_folded.insert(Fold(form), row.key);
            }
            m_longest = std::max(m_longest, form.size());
        }
    }
}

const Units& Units::Common() {
    static const Units common(CommonRows());
    return common;
}

QString Units::Key(QStringView written) const {
    const QStringView form = WithoutPeriod(written.trimmed());
    if (form.size() == 1) {
        return m_exact.value(form.toString());
    }
    return m_folded.value(Fold(form));
}

qsizetype Units::MatchAt(QStringView text) const {
    if (text.isEmpty() || !text.front().isLetter()) {
        return 0;
    }
    for (qsizetype length = std::min(m_longest, text.size()); length > 0; --length) {
        const bool endsWord = length == text.size() || !text.at(length).isLetter();
        if (endsWord && !text.at(length - 1).isSpace() && !Key(text.left(length)).isEmpty()) {
            const bool period = length < text.size() && text.at(length) == QLatin1Char('.');
            return period ? length + 1 : length;
        }
    }
    return 0;
}

}  // namespace Exchange
