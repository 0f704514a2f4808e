#include "FuzzTargets.h"

const QList<FuzzTargets::Target>& FuzzTargets::all()
{
    static const QList<Target> targets{
        {"project", project},   {"package", package},      {"groove", groove},
        {"registry", registry}, {"catalogue", catalogue},  {"session", session},
        {"recents", recents},   {"login", login},          {"drop", drop},
        {"audio", audio},       {"velta_obra", velta_obra}};
    return targets;
}
