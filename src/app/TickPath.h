#pragma once

// Marks a function that runs on every tick of the countdown, that is every
// second for as long as the program runs. GCC gathers such functions in one
// place in the binary. A tick comes to cold caches and TLBs, and each page of
// code it runs through costs it a miss; spread over the binary as the
// source files put them, these functions touched a page each.
#define NARV_TICK_PATH [[gnu::hot]]
