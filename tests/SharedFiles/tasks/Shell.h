#pragma once

#include <QString>

/// What runs the commands of the tests.
inline const QString shell = "/bin/sh";
