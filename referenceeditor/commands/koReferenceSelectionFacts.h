#pragma once

#include <kovis/kodReferenceNode.h>

#include <QList>

// What the selected references allow: each fact holds when at least one selected
// reference allows it. Locked references only allow what leaves them as they are.
class koReferenceSelectionFacts
{
public:
    // The facts of one link (smart or source) of the selection.
    struct Link
    {
        bool reimportSelected = false;
        bool reimportOutdated = false;
        bool reimportUnloaded = false;
        bool replace = false;
        bool repath = false;
        bool remove = false;
        bool open = false;
        bool info = false;
        bool pathField = false;
    };

    explicit koReferenceSelectionFacts(const QList<kodReferenceNode>& selection);

    bool load = false;
    bool unload = false;
    bool editable = false;
    bool clone = false;
    bool repath = false;
    bool remove = false;
    bool convert = false;
    bool createSmart = false;
    bool createSource = false;
    bool saveChanges = false;
    bool saveAs = false;
    Link smart;
    Link source;

private:
    // present: the reference has the link; usable: its file can be read from.
    struct LinkState
    {
        bool present;
        bool usable;
        koReferenceTypes::FileState fileState;
    };

    void addAnyReference(const kodReferenceNode& reference, const LinkState& smartLink, const LinkState& sourceLink);
    void addUnlockedReference(const kodReferenceNode& reference, const LinkState& smartLink,
                              const LinkState& sourceLink, bool single);
    static void addUnlockedLink(Link& facts, const LinkState& link, bool loaded, bool single);
};
