#include "tests/kit/report.h"

#include <filesystem>
#include <iostream>

Report::Report(const std::wstring& path)
    : file_(std::filesystem::path(path), std::ios::binary | std::ios::trunc) {}

void Report::Note(std::string_view line) {
    file_ << line << "\r\n" << std::flush;
}

void Report::Say(std::string_view line) {
    std::cout << line << std::endl;
    Note(line);
}

void Report::Count(int passed, int failed, int skipped) {
    passed_ += passed;
    failed_ += failed;
    skipped_ += skipped;
}

void Report::Pass(std::string_view claim) {
    Count(1, 0, 0);
    Say(std::string("passed: ").append(claim));
}

void Report::Fail(std::string_view claim, std::string_view found) {
    Count(0, 1, 0);
    Say(std::string("FAILED: ").append(claim));
    Say(std::string("  found: ").append(found));
}

int Report::Close() {
    Say(std::to_string(passed_) + " passed, " + std::to_string(failed_) + " failed, " +
        std::to_string(skipped_) + " skipped");
    return failed_ == 0 && passed_ > 0 ? 0 : 1;
}
