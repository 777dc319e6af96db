-- Morvena recipe database, file kind (SQLite).
-- Names and titles use the NOCASE collation: the program replaces it on its own connections
-- with a Slovenian, case-blind one; any other reader (the sqlite3 shell) gets SQLite's own.
-- Keys are assigned by the database and never reused. The searches by ingredient and by method
-- text go from the matching rows to their recipes: ingredient -> lines (ingredientID, sectionID)
-- -> recipes (sectionID, recipeID), each index answering without the table.

CREATE TABLE [Group] (
    groupID INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL COLLATE NOCASE,
    description TEXT
);

CREATE TABLE [Type] (
    typeID INTEGER PRIMARY KEY AUTOINCREMENT,
    groupID INTEGER NOT NULL,
    name TEXT NOT NULL COLLATE NOCASE,
    description TEXT
);

CREATE TABLE [Source] (
    sourceID INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL COLLATE NOCASE,
    description TEXT
);

CREATE TABLE [Unit] (
    unitID INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL COLLATE NOCASE,
    description TEXT
);

CREATE TABLE [Ingredient] (
    ingredientID INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL COLLATE NOCASE,
    description TEXT
);

CREATE TABLE [Recipe] (
    recipeID INTEGER PRIMARY KEY AUTOINCREMENT,
    typeID INTEGER NOT NULL,
    sourceID INTEGER,
    title TEXT NOT NULL COLLATE NOCASE
);

CREATE TABLE [Section] (
    sectionID INTEGER PRIMARY KEY AUTOINCREMENT,
    title TEXT COLLATE NOCASE,
    instructions TEXT NOT NULL
);

CREATE TABLE [RecipeSection] (
    recipeSectionID INTEGER PRIMARY KEY AUTOINCREMENT,
    recipeID INTEGER NOT NULL,
    sectionID INTEGER NOT NULL,
    place INTEGER NOT NULL
);

CREATE TABLE [SectionIngredient] (
    sectionIngredientID INTEGER PRIMARY KEY AUTOINCREMENT,
    sectionID INTEGER NOT NULL,
    ingredientID INTEGER NOT NULL,
    unitID INTEGER NOT NULL,
    amount INTEGER NOT NULL
);

CREATE INDEX TypeGroup ON [Type] (groupID);
CREATE INDEX RecipeType ON [Recipe] (typeID);
CREATE INDEX RecipeSource ON [Recipe] (sourceID);
CREATE INDEX RecipeSectionRecipe ON [RecipeSection] (recipeID, place, sectionID);
CREATE INDEX RecipeSectionSection ON [RecipeSection] (sectionID, recipeID);
CREATE INDEX SectionIngredientSection ON [SectionIngredient] (sectionID, sectionIngredientID, ingredientID);
CREATE INDEX SectionIngredientIngredient ON [SectionIngredient] (ingredientID, sectionID);
CREATE INDEX SectionIngredientUnit ON [SectionIngredient] (unitID);
