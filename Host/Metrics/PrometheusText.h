#pragma once

#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

/// Metrics in the text exposition format 0.0.4 that Prometheus collects.
///
/// Samples of one name may come at any time; they are written together, under the help and the type that came first.
class PrometheusText final
{
public:
    static constexpr char const* CONTENT_TYPE = "text/plain; version=0.0.4; charset=utf-8";

    enum class Type
    {
        COUNTER,
        GAUGE,
        SUMMARY, ///< its samples are those of "..._sum" and "..._count"
        UNTYPED
    };

    using Labels = std::vector<std::pair<std::string, std::string>>;

    PrometheusText();
    ~PrometheusText();

    PrometheusText(PrometheusText const&) = delete;
    PrometheusText& operator=(PrometheusText const&) = delete;

    /// Adds a sample to the family `name`, which holds letters, digits and underscores; label names too. `suffix` stands
    /// behind the name in the sample alone.
    void Add(std::string const& name, Type type, std::string const& help, Labels const& labels,
             std::string const& number, std::string const& suffix = {});

    /// All families, by name.
    std::string Write() const;

    /// "resultSets" as such names have it: "result_sets". What may not stand in a name becomes an underscore.
    static std::string NameOf(std::string const& key);

    /// The shortest text that reads back as `number`; "NaN", "+Inf" and "-Inf" for what is none.
    static std::string Number(double number);

    /// Microseconds as seconds, exact.
    static std::string Seconds(unsigned long long usec);

private:
    struct Family
    {
        Type type;
        std::string help;
        std::string samples;
    };

    std::map<std::string, Family> families;
};

} // namespace ZuHost
