// Prints a fact about this machine. The runner copies these lines into report.txt.
#pragma once

#include <iostream>
#include <string>

inline void Fact(const std::string& text) {
    std::cout << "fact: " << text << std::endl;
}
