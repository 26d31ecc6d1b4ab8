#include "tests/diagnosis/exports/Masters.h"

#include <algorithm>

#include "tests/support/MovieFixture.h"

namespace diagnosis::test {

MovieMaker Masters::asked(const Still& still, const Master& master) {
  std::shared_ptr<OfStill>& all = stills_[still.name];
  if (!all) all = std::make_shared<OfStill>(OfStill{still, {}});
  const bool known = std::any_of(all->masters.begin(), all->masters.end(),
                                 [&](const Master& each) { return each.name == master.name; });
  if (!known) all->masters.push_back(master);
  return [all, name = master.name] { return made(*all, name); };
}

std::string Masters::made(const OfStill& all, const std::string& name) {
  std::vector<movie::test::FixtureOutput> outputs;
  std::size_t wanted = 0;
  for (const Master& master : all.masters) {
    if (master.name == name) wanted = outputs.size();
    outputs.push_back({master.name + "-master" + master.encoding.extension, argumentsOf(master)});
  }
  return movie::test::fixtureMovies(all.still.path(), outputs)[wanted];
}

}  // namespace diagnosis::test
