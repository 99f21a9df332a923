// SPDX-License-Identifier: MIT

#include "subject.h"

#include "cell_value.h"
#include "failure.h"
#include "join.h"
#include "suggestion.h"

namespace vorn
{

namespace
{

bool checkPath(const Subject& subject, Status& status)
{
    switch (subject.pMember->pType->valueClass)
    {
        case ValueClass::Object:
        case ValueClass::AnyJson:
            return true;
        case ValueClass::Array:
            return fail(status, Code::BadType, subject.name, "^ is an array, and paths lead into objects only.",
                        shown(subject.pMember->name));
        default:
            return fail(status, Code::UnknownMember, subject.name, "^ holds no JSON, so there is no path into it.",
                        shown(subject.pMember->name));
    }
}

}  // namespace

bool failUnknown(const Definition& definition, std::string_view name, Status& status)
{
    const std::size_t dot = name.find('.');
    Suggestion whole(name);
    Suggestion first(name.substr(0, dot));
    for (const Member& member : definition.members())
    {
        whole.consider(member.name);
        first.consider(member.name);
    }
    std::string strNearest(whole.nearest());
    if (dot != std::string_view::npos && !first.nearest().empty())
        strNearest = join({first.nearest(), name.substr(dot)});
    return fail(status, Code::UnknownMember, name, "The definition has no member %^", didYouMean(strNearest));
}

bool readSubject(const Definition& definition, std::string_view name, Subject& subject, Status& status)
{
    subject.name = name;
    subject.blPath = false;
    subject.pMember = definition.find(name);
    if (subject.pMember != nullptr)
        return true;
    for (std::size_t dot = name.rfind('.'); dot != std::string_view::npos && dot > 0; dot = name.rfind('.', dot - 1))
    {
        subject.pMember = definition.find(name.substr(0, dot));
        if (subject.pMember == nullptr)
            continue;
        subject.path = name.substr(dot + 1);
        subject.blPath = true;
        return checkPath(subject, status);
    }
    return failUnknown(definition, name, status);
}

}  // namespace vorn
