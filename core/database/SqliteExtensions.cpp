#include "core/database/SqliteExtensions.h"

#include <sqlite3.h>

#include "core/database/SlovenianText.h"

namespace SqliteExtensions {
namespace {

int CompareNames(void*, int lengthA, const void* a, int lengthB, const void* b) {
    return SlovenianText::Compare(std::string_view(static_cast<const char*>(a), lengthA),
                                  std::string_view(static_cast<const char*>(b), lengthB));
}

std::string_view TextArgument(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return text ? std::string_view(text, sqlite3_value_bytes(value)) : std::string_view();
}

// like(pattern, text [, escape]): "text LIKE pattern [ESCAPE escape]".
void LikeFunction(sqlite3_context* context, int argc, sqlite3_value** argv) {
    for (int i = 0; i < argc; ++i) {
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) {
            sqlite3_result_null(context);
            return;
        }
    }
    char32_t escape = 0;
    if (argc == 3) {
        const std::string_view escapeText = TextArgument(argv[2]);
        if (escapeText.size() != 1) {
            sqlite3_result_error(context, "ESCAPE expression must be a single character", -1);
            return;
        }
        escape = static_cast<unsigned char>(escapeText[0]);
    }
    if (argc == 3) {
        sqlite3_result_int(
            context, SlovenianText::Like(TextArgument(argv[0]), TextArgument(argv[1]), escape));
        return;
    }
    // The pattern is read once per statement and kept with it while it stays the same.
    auto* pattern = static_cast<SlovenianText::LikePattern*>(sqlite3_get_auxdata(context, 0));
    if (!pattern) {
        pattern = new SlovenianText::LikePattern(TextArgument(argv[0]));
        sqlite3_set_auxdata(context, 0, pattern, [](void* kept) {
            delete static_cast<SlovenianText::LikePattern*>(kept);
        });
        pattern = static_cast<SlovenianText::LikePattern*>(sqlite3_get_auxdata(context, 0));
        if (!pattern) {  // not kept (the pattern is not a constant): used for this row only
            sqlite3_result_int(context,
                               SlovenianText::Like(TextArgument(argv[0]), TextArgument(argv[1])));
            return;
        }
    }
    sqlite3_result_int(context, pattern->Matches(TextArgument(argv[1])) ? 1 : 0);
}

}  // namespace

void Register(sqlite3* db) {
    sqlite3_create_collation_v2(db, "NOCASE", SQLITE_UTF8, nullptr, CompareNames, nullptr);
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    sqlite3_create_function_v2(db, "like", 2, flags, nullptr, LikeFunction, nullptr, nullptr,
                               nullptr);
    sqlite3_create_function_v2(db, "like", 3, flags, nullptr, LikeFunction, nullptr, nullptr,
                               nullptr);
}

}  // namespace SqliteExtensions
