// One function per subsystem; each prints what it shows under its own heading.
#ifndef TESSERA_TOUR_H
#define TESSERA_TOUR_H

#include <iostream>

namespace Tour {

inline void Heading(const char* title) { std::cout << "\n== " << title << " ==\n"; }

void ShowFrame();
void ShowMemory();
void ShowEvents();
void ShowText();
void ShowCharsets();
void ShowTime();
void ShowTimers();
void ShowNumerics();
void ShowInternet();

}  // namespace Tour

#endif
