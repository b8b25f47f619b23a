#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ZuHost
{

/// Metrics in the text exposition format 0.0.4 of Prometheus.
///
/// Samples of one family may be added in any order. `Write` groups them under the help and type of the first sample. The
/// text is well-formed whatever the names of keys and labels are: of two samples with the same name and labels the first
/// one stays.
class PrometheusText final
{
public:
    static constexpr char const* CONTENT_TYPE = "text/plain; version=0.0.4; charset=utf-8";

    enum class Type
    {
        COUNTER,
        GAUGE,
        SUMMARY, ///< its samples have the suffixes "_sum" and "_count"
        UNTYPED
    };

    using Labels = std::vector<std::pair<std::string, std::string>>; ///< name and value

    PrometheusText();
    ~PrometheusText();

    PrometheusText(PrometheusText const&) = delete;
    PrometheusText& operator=(PrometheusText const&) = delete;

    /// Adds a sample to the family `name`. Names of families and labels consist of letters, digits and underscores.
    /// Only the sample's name gets the `suffix`. Values of labels and helps may be any bytes.
    void Add(std::string const& name, Type type, std::string const& help, Labels const& labels,
             std::string const& number, std::string const& suffix = {});

    /// All families, sorted by name.
    std::string Write() const;

    /// Converts a key such as "resultSets" to "result_sets". A character that is not allowed in a name becomes an
    /// underscore.
    static std::string NameOf(std::string const& key);

    /// Adds a label. Its name is `NameOf(key)`, changed where it is no name of a label or where `labels` has it already.
    static void AddLabel(Labels& labels, std::string const& key, std::string const& value);

    /// The shortest text that reads back as `number`; "NaN", "+Inf" and "-Inf" for special values.
    static std::string Number(double number);

    /// Converts microseconds to seconds, exactly.
    static std::string Seconds(unsigned long long usec);

private:
    struct Family
    {
        Type type;
        std::string help;
        std::string samples;
    };

    std::map<std::string, Family> families;
    std::set<std::string> sampleNames; // with their labels
};

} // namespace ZuHost
