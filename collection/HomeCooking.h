#pragma once

#include <vector>

// The words of a Slovenian home-cooking collection, for generated databases: recipe groups with
// their subgroups, dishes and the additions that complete a title, the ingredients each group
// favours, ingredients from the most used to the rarest, sources, section titles and the
// sentences that method texts are made of.
namespace HomeCooking {

struct Group {
    const char* name;
    int weight;                       // share of the recipes, in parts of the sum over all groups
    std::vector<const char*> types;   // from the biggest subgroup to the smallest
    std::vector<const char*> dishes;  // title beginnings
    std::vector<const char*> additions;   // title endings ("" for none)
    std::vector<const char*> favourites;  // ingredient names this group uses most
    std::vector<const char*> steps;       // method sentences of this group
};

const std::vector<Group>& Groups();
// Every ingredient name, the most used first (the favourites of the groups among them).
const std::vector<const char*>& Ingredients();
const std::vector<const char*>& Units();
const std::vector<const char*>& Sources();
const std::vector<const char*>& SectionTitles();
// Method sentences that fit any dish.
const std::vector<const char*>& CommonSteps();

}  // namespace HomeCooking
