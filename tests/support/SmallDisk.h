#pragma once

#include <functional>
#include <string>

namespace movie::test {

/// Runs `work` in a process of its own, with the path of a folder that is a tmpfs of 1 MB and that nobody else sees.
/// What fails in it fails the test. Where neither a user nor root may mount one, LUMACHECK_SMALL_DISK names a folder
/// that is one; without it the test fails and says so. `what` names the work in what is said.
void onSmallDisk(const std::string& what, const std::function<void(const std::string& folder)>& work);

/// Takes all the space that there is in the folder, in a file of that name.
void fillDisk(const std::string& path);

}  // namespace movie::test
