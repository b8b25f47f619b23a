#pragma once

#include <string>
#include <utility>

namespace ZuControl
{

/// The load or save of one part of a configuration: its parameters, its outputs, one or all of its assemblies. It
/// reports the failures of the part in two layers.
///
/// The outer layer is the whole part: a failure is logged and leaves as a nested exception with the same status. The
/// inner layer is a step inside a bracket that is closed in any case: a failure is logged, and the part throws
/// `Zu::Status::FAILURE` at its end.
class PersistedPart final
{
public:
    /// Formats for the service, or, for a part with an id, for the id and the service.
    struct Texts
    {
        char const* stepUser; ///< the user's line about a step
        char const* step;     ///< its developer's line, and the text of the exception at the end
        char const* partUser; ///< the user's line about the whole part; null for none
        char const* part;     ///< the text of the nested exception
    };

    static Texts const LOADED_PARAMETERS;
    static Texts const LOADED_OUTPUTS;
    static Texts const LOADED_ASSEMBLY;  ///< with an id
    static Texts const SAVED_PARAMETERS; ///< without a step
    static Texts const SAVED_OUTPUTS;
    static Texts const SAVED_ASSEMBLIES;

    /// `newFunction` is the label of the operation. `newId` may be null; a line shows the text that it has by then.
    /// The texts, the service and the id outlive the object.
    PersistedPart(std::string newFunction, char const* newService, std::string const* newId, Texts const& newTexts);

    /// Runs the whole part.
    template <typename Work>
    void Run(Work&& work)
    {
        try
        {
            std::forward<Work>(work)();
        }
        catch (...)
        {
            ThrowNested();
        }
        ThrowIfStepFailed();
    }

    /// Runs a step of the part. Returns false when it has failed.
    template <typename Step>
    bool RunStep(Step&& step)
    {
        try
        {
            std::forward<Step>(step)();
            return true;
        }
        catch (...)
        {
            ReportStep();
            return false;
        }
    }

private:
    template <typename Write>
    void WithNames(Write write) const;
    void ReportStep();
    void ThrowNested() const;
    void ThrowIfStepFailed() const;

    std::string const function;
    char const* const service;
    std::string const* const id;
    Texts const& texts;
    bool hasFailed = false;
};

} // namespace ZuControl
