// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include "contender.h"

// One of each file beside this one.
extern const Contender OURS;
extern const Contender RAW;
extern const Contender STDIO;
extern const Contender GLIB;
extern const Contender INIH;
extern const Contender SIMPLEINI;
extern const Contender INIPARSER;
extern const Contender BOOST;
extern const Contender QT;
