// Prints calls on standard output, a line each: aligned for a reader, as CSV or as JSON.
#pragma once

#include "call_figures.h"
#include "call_tracker.h"

enum class CallForm { text, csv, json, none };

class CallPrinter {
  public:
    explicit CallPrinter(CallForm form) : form_(form) {}

    // The names of the columns come before the first line.
    void print(const Call &call);

  private:
    CallForm form_;
    bool is_first_ = true;
};

// The figures of all calls, for a reader or as one JSON object.
void print_figures(const CallFigures &figures);
void print_figures_json(const CallFigures &figures);
