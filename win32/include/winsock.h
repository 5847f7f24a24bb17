// winsock.h - the older name of <winsock2.h>.
#pragma once

#include "winsock2.h"
