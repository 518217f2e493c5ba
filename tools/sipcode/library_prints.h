// The library prints a few diagnostics of its own on standard output, where the tool's output goes.
#pragma once

// Discards what goes to standard output as long as it lives. The tool tells the same in its own words: the video section is
// a member of the record, and a method that the encoders do not know is a refusal.
class DiscardLibraryPrints {
  public:
    DiscardLibraryPrints();
    ~DiscardLibraryPrints();
    DiscardLibraryPrints(const DiscardLibraryPrints &) = delete;
    DiscardLibraryPrints &operator=(const DiscardLibraryPrints &) = delete;

  private:
    int output_; // standard output, kept aside
};
