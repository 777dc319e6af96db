#include "core/database/SingleStatement.h"

namespace SingleStatement {
namespace {

// Blanks as both databases' lexers know them (ASCII only: any other character is text).
bool IsBlank(QChar c) {
    const char16_t u = c.unicode();
    return u == ' ' || u == '\t' || u == '\n' || u == '\r' || u == '\f' || u == '\v';
}

bool IsAsciiLetter(char16_t u) { return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z'); }
bool IsDigit(char16_t u) { return u >= '0' && u <= '9'; }

// PostgreSQL: an identifier starts with a letter, "_" or any character beyond ASCII and goes
// on with those, digits and "$".
bool IsIdentStart(QChar c) {
    const char16_t u = c.unicode();
    return IsAsciiLetter(u) || u == '_' || u >= 0x80;
}
bool IsIdentCont(QChar c) { return IsIdentStart(c) || IsDigit(c.unicode()) || c == u'$'; }

class Reader {
public:
    Reader(const QString& sql, Lexer lexer, bool backslashInPlainStrings)
        : s(sql),
          n(sql.size()),
          postgres(lexer == Lexer::PostgreSql),
          plainEscapes(backslashInPlainStrings) {}

    bool Single() {
        bool ended = false;  // a ";" outside literals has been read
        while (i < n) {
            if (IsBlank(s[i])) {
                ++i;
            } else if (At("--")) {
                SkipLineComment();
            } else if (At("/*")) {
                SkipBlockComment();
            } else if (ended) {
                return false;  // something after the end of the first statement
            } else if (s[i] == u';') {
                ended = true;
                ++i;
            } else {
                SkipToken();
            }
        }
        return true;
    }

private:
    QChar Peek(qsizetype k) const { return i + k < n ? s[i + k] : QChar(); }
    bool At(const char* two) const {
        return Peek(0) == QLatin1Char(two[0]) && Peek(1) == QLatin1Char(two[1]);
    }

    // A "--" comment ends at the end of the line (PostgreSQL also ends it at a CR; reading it so
    // for SQLite only ends it earlier, which is the safe side).
    void SkipLineComment() {
        while (i < n && s[i] != u'\n' && s[i] != u'\r') {
            ++i;
        }
    }

    // PostgreSQL nests block comments, SQLite does not. An unterminated one runs to the end.
    void SkipBlockComment() {
        int depth = 0;
        i += 2;
        while (i < n) {
            if (At("*/")) {
                i += 2;
                if (depth-- == 0) {
                    return;
                }
            } else if (postgres && At("/*")) {
                i += 2;
                ++depth;
            } else {
                ++i;
            }
        }
    }

    // From just after the opening quote to just after the closing one; a doubled quote stays
    // inside, and with backslash escapes a backslash takes the next character with it.
    void SkipQuoted(QChar quote, bool backslashEscapes) {
        while (i < n) {
            const QChar c = s[i++];
            if (backslashEscapes && c == u'\\') {
                ++i;
            } else if (c == quote) {
                if (Peek(0) != quote) {
                    return;
                }
                ++i;
            }
        }
    }

    void SkipToken() {
        const QChar c = s[i];
        if (c == u'\'') {
            ++i;
            SkipQuoted(c, plainEscapes);
        } else if (c == u'"' || (!postgres && c == u'`')) {
            ++i;
            SkipQuoted(c, false);
        } else if (!postgres && c == u'[') {
            const qsizetype close = s.indexOf(QLatin1Char(']'), i + 1);
            i = close < 0 ? n : close + 1;
        } else if (postgres) {
            SkipPostgresToken();
        } else {
            ++i;
        }
    }

    void SkipPostgresToken() {
        const QChar c = s[i];
        const char16_t u = c.unicode();
        if ((u == 'e' || u == 'E') && Peek(1) == u'\'') {
            i += 2;
            SkipQuoted(QLatin1Char('\''), true);
        } else if ((u == 'u' || u == 'U') && Peek(1) == u'&' &&
                   (Peek(2) == u'\'' || Peek(2) == u'"')) {
            const QChar quote = Peek(2);
            i += 3;
            SkipQuoted(quote, quote == u'\'' && plainEscapes);
        } else if (IsIdentStart(c)) {
            // B'...', X'...' and N'...' end in their quote: the identifier stops before it.
            while (i < n && IsIdentCont(s[i])) {
                ++i;
            }
        } else if (IsDigit(u) || (u == '.' && IsDigit(Peek(1).unicode()))) {
            SkipNumber();
        } else if (u == '$') {
            SkipDollar();
        } else {
            ++i;
        }
    }

    void SkipDigits() {
        while (i < n && IsDigit(s[i].unicode())) {
            ++i;
        }
    }

    void SkipNumber() {
        SkipDigits();
        if (Peek(0) == u'.') {
            ++i;
            SkipDigits();
        }
        const char16_t e = Peek(0).unicode();
        if (e == 'e' || e == 'E') {
            const qsizetype sign = (Peek(1) == u'+' || Peek(1) == u'-') ? 1 : 0;
            if (IsDigit(Peek(1 + sign).unicode())) {
                i += 1 + sign;
                SkipDigits();
            }
        }
    }

    // "$tag$ ... $tag$" (the tag may be empty); any other "$" is a parameter or an operator.
    void SkipDollar() {
        qsizetype end = i + 1;
        if (end < n && IsIdentStart(s[end])) {
            while (end < n && IsIdentCont(s[end]) && s[end] != u'$') {
                ++end;
            }
        }
        if (end >= n || s[end] != u'$') {
            ++i;
            return;
        }
        const QString delimiter = s.mid(i, end - i + 1);
        const qsizetype close = s.indexOf(delimiter, end + 1);
        i = close < 0 ? n : close + delimiter.size();
    }

    const QString& s;
    const qsizetype n;
    const bool postgres;
    const bool plainEscapes;
    qsizetype i = 0;
};

}  // namespace

bool IsSingle(const QString& sql, Lexer lexer) {
    if (lexer == Lexer::Sqlite) {
        return Reader(sql, lexer, false).Single();
    }
    return Reader(sql, lexer, false).Single() && Reader(sql, lexer, true).Single();
}

QString RefusedDescription() {
    return QStringLiteral("Besedilo SQL vsebuje več kot en stavek; ni bilo izvedeno.");
}

}  // namespace SingleStatement
