#pragma once

#include <QByteArray>
#include <QtGlobal>

// A recipe as the database holds it, in a few bytes: its row (subgroup, source, title), its
// sections in place order (title, method) and their ingredient lines (amount, unit, ingredient)
// in the order they were written. The editor reads it with the recipe and again before it saves:
// when the two differ, someone else has saved or deleted the recipe meanwhile. The keys of
// sections and lines do not count, so a recipe saved again as it was is the same recipe.
class RecipeFingerprint {
public:
    // A recipe that is not there.
    RecipeFingerprint() = default;

    // The recipe as it is now (inside the caller's transaction, if one is open).
    static RecipeFingerprint Read(qint32 recipeID);

    bool Exists() const { return !m_digest.isEmpty(); }
    bool operator==(const RecipeFingerprint& other) const { return m_digest == other.m_digest; }
    bool operator!=(const RecipeFingerprint& other) const { return !(*this == other); }

private:
    QByteArray m_digest;
};
