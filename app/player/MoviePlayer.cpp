#include "app/player/MoviePlayer.h"
