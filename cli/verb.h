#ifndef IMGTUNE_CLI_VERB_H
#define IMGTUNE_CLI_VERB_H

#include <functional>
#include <string>
#include <vector>

// The verbs' view of the option parser. Its own header stands behind verb.cpp alone: read in every
// verb, it would be most of the time that building the command line takes.

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace imgtune::cli {

/// An option of a verb; its members add to what it accepts, and chain.
class Option {
  public:
    explicit Option(CLI::Option* option) : option_(option) {}

    Option required() const;
    Option shows_default() const;
    Option type_name(const std::string& name) const;
    Option one_of(const std::vector<std::string>& words) const;
    /// std::int64_t, std::uint64_t, unsigned, int or double.
    template <typename Number>
    Option range(Number least, Number most) const;
    Option separated_by_commas() const;
    Option one_value_each() const;  ///< repeatable, and never takes what follows its value
    Option exactly(int values) const;
    Option needs(const Option& other) const;
    Option excludes(const Option& other) const;

  private:
    CLI::Option* option_;
};

/// What a verb is called with. Values that it writes to live as long as the verb's `run`.
class Verb {
  public:
    Verb(CLI::App& app, std::function<int()>& chosen) : app_(app), chosen_(chosen) {}

    /// Names as "-o,--output", or "TUNING" for what stands without one. Defined for the types that
    /// verbs use.
    template <typename Value>
    Option option(const std::string& names, Value& value, const std::string& help) const;
    Option flag(const std::string& names, bool& value, const std::string& help) const;
    void footer(const std::string& text) const;

    /// What to do when the verb is chosen; the result is the exit status. A BadInput that it throws
    /// is reported, with exit status 2.
    void run(std::function<int()> action) const;

  private:
    CLI::App& app_;
    std::function<int()>& chosen_;
};

/// All verbs of the program.
class Verbs {
  public:
    Verbs(CLI::App& app, std::function<int()>& chosen) : app_(app), chosen_(chosen) {}

    Verb add(const std::string& name, const std::string& summary) const;

  private:
    CLI::App& app_;
    std::function<int()>& chosen_;
};

}  // namespace imgtune::cli

#endif
