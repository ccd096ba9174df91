// The check's report, report.txt. Each line is flushed, so the report of a killed check shows how far it got.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

class Report {
  public:
    explicit Report(const std::wstring& path);

    bool opened() const { return file_.is_open(); }

    // Writes a line to the report and to the console.
    void Say(std::string_view line);
    // Writes a line to the report only.
    void Note(std::string_view line);

    // Adds to the counts of the last line.
    void Count(int passed, int failed, int skipped);
    void Pass(std::string_view claim);
    void Fail(std::string_view claim, std::string_view found);

    // Writes the last line: "N passed, N failed, N skipped". Returns the exit code of the check, which is 0
    // only if something passed and nothing failed.
    int Close();

  private:
    std::ofstream file_;
    int passed_ = 0;
    int failed_ = 0;
    int skipped_ = 0;
};
