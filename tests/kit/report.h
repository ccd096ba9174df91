// The check's report, report.txt. Each line is on the disk before the next step
// begins, so that the report of a check that was killed shows how far it got.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

class Report {
  public:
    explicit Report(const std::wstring& path);

    bool opened() const { return file_.is_open(); }

    // A line in the report and on the console.
    void Say(std::string_view line);
    // A line in the report alone.
    void Note(std::string_view line);

    // Adds to the counts of the closing line.
    void Count(int passed, int failed, int skipped);
    void Pass(std::string_view claim);
    void Fail(std::string_view claim, std::string_view found);

    // "N passed, N failed, N skipped". Returns the exit code of the check: 0 only when nothing failed and
    // something passed.
    int Close();

  private:
    std::ofstream file_;
    int passed_ = 0;
    int failed_ = 0;
    int skipped_ = 0;
};
