// What the check writes for somebody to send back: report.txt, each line on the disk before the next step
// begins, so that a check which dies still tells how far it came.
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
    void Count(int passed, int failed);
    void Pass(std::string_view claim);
    void Fail(std::string_view claim, std::string_view found);

    // "N passed, N failed". The exit code of the check: 0 only when nothing failed and something passed.
    int Close();

  private:
    std::ofstream file_;
    int passed_ = 0;
    int failed_ = 0;
};
