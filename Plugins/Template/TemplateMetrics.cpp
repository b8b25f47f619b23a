#include "TemplateMetrics.h"

TemplateMetrics::TemplateMetrics() : Structure(true)
{
    Register("controlDrops", controlDrops);
    Register("datagrams", datagrams);
}

TemplateMetrics::~TemplateMetrics() = default;
