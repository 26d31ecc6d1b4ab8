#include "tests/diagnosis/exports/Pairs.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "tests/diagnosis/exports/Masters.h"
#include "tests/support/MovieFixture.h"

namespace diagnosis::test {
namespace {

/// Clips of one half, and those of them that serve a need.
struct Choice {
  std::vector<Clip> all, colorful, allTones;

  const std::vector<Clip>& serving(Needs needs) const {
    if (needs == Needs::Any) return all;
    return needs == Needs::Colorful ? colorful : allTones;
  }

  const Clip& forRecipe(const Recipe& recipe, std::size_t number) const {
    const std::vector<Clip>& some = serving(recipe.needs);
    const std::string& master = recipe.master.name;
    if (master == "prores" || master == "h264" || master == "png") return some[number % some.size()];
    // Other masters are made of two clips only.
    return some[(number % 2 + master.size()) % some.size()];
  }
  const Clip& after(const Clip& clip) const {
    const auto at = std::find_if(all.begin(), all.end(), [&](const Clip& each) { return each.name == clip.name; });
    return at + 1 == all.end() ? all.front() : *(at + 1);
  }
};

Choice choiceOf(Half half) {
  Choice choice;
  for (const Clip& clip : clips()) {
    if (clip.half != half) continue;
    choice.all.push_back(clip);
    if (clip.colorful) choice.colorful.push_back(clip);
    if (clip.allTones) choice.allTones.push_back(clip);
  }
  return choice;
}

const Still& shownBy(const Recipe& recipe, const Clip& clip, const Choice& choice) {
  switch (recipe.shows) {
    case Shows::Master:
      return clip.still;
    case Shows::AnotherClip:
      return choice.after(clip).still;
    case Shows::LaterMoment:
      break;
  }
  return clip.later;
}

/// Recipes with one master, one clip and one thing to show go together.
using Groups = std::map<std::tuple<std::string, std::string, Shows>, Batch>;

void addTo(Groups& groups, Masters& masters, const Recipe& recipe, const Clip& clip, const Choice& choice) {
  Batch& batch = groups[{clip.name, recipe.master.name, recipe.shows}];
  if (batch.recipes.empty()) {
    batch = {.half = clip.half,
             .label = clip.name,
             .source = masters.asked(clip.still, recipe.master),
             .shown = masters.asked(shownBy(recipe, clip, choice), recipe.master),
             .recipes = {}};
  }
  batch.recipes.push_back(recipe);
}

void addClips(std::vector<Batch>& all, Half half) {
  const Choice choice = choiceOf(half);
  Masters masters;
  Groups groups;
  std::size_t number = half == Half::Fit ? 0 : 1;
  for (const Recipe& recipe : allRecipes()) {
    const Clip& clip = choice.forRecipe(recipe, number++);
    const std::vector<Clip> some = recipe.everyClip ? choice.all : std::vector<Clip>{clip};
    for (const Clip& each : some) addTo(groups, masters, recipe, each, choice);
  }
  for (auto& [key, batch] : groups) all.push_back(std::move(batch));
}

void addMovies(std::vector<Batch>& all) {
  std::size_t movies = 0;
  for (const ExistingMovie& movie : existingMovies()) {
    const auto path = [path = movie.path] { return path; };
    Batch batch{movie.half, "movie", path, path, recipesFor(movie.master)};
    // A ramp has no colours that a matrix could change; of the one picture that the others show, half will do.
    const bool ramp = movie.master.name == "ramp";
    std::size_t number = movies++;
    std::erase_if(batch.recipes, [&](const Recipe& recipe) {
      return ramp ? recipe.truth.causes.front() == CauseKind::Matrix : number++ % 2 == 0;
    });
    for (Recipe& recipe : batch.recipes) recipe.placement.dest = movie.shown;
    all.push_back(std::move(batch));
  }
}

}  // namespace

std::string pairName(const Batch& batch, const Recipe& recipe) {
  return recipe.name + "/" + batch.label;
}

std::vector<Batch> batches(const std::string& only) {
  std::vector<Batch> all;
  addClips(all, Half::Fit);
  addClips(all, Half::Report);
  addMovies(all);
  for (Batch& batch : all) {
    std::erase_if(batch.recipes,
                  [&](const Recipe& recipe) { return pairName(batch, recipe).find(only) == std::string::npos; });
  }
  std::erase_if(all, [](const Batch& batch) { return batch.recipes.empty(); });
  return all;
}

std::vector<ExportPair> made(const Batch& batch) {
  std::vector<movie::test::FixtureOutput> outputs;
  for (const Recipe& recipe : batch.recipes)
    outputs.push_back({recipe.name + recipe.encoding.extension, argumentsOf(recipe)});
  const std::string source = batch.source();
  const std::vector<std::string> paths = movie::test::fixtureMovies(batch.shown(), outputs);
  std::vector<ExportPair> pairs;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    pairs.push_back({pairName(batch, batch.recipes[i]), batch.half, batch.recipes[i], source, paths[i]});
  }
  return pairs;
}

}  // namespace diagnosis::test
