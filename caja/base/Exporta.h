#pragma once

// What a host links against: the classes and functions of the installed
// headers. The libraries are built with hidden symbols by default, so that
// nothing else of them is part of what hosts can reach or come to rely on.
#define CAJA_EXPORT __attribute__((visibility("default")))

// Shared between the component's own libraries (the hosts and the dialogs
// use the core's conversions, texts and SQL dialect) but declared in no
// installed header: no host has a declaration to reach it with.
#define CAJA_INTERNO __attribute__((visibility("default")))
