#include "koReferenceSelectionFacts.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPermissionService.h>

koReferenceSelectionFacts::koReferenceSelectionFacts(const QList<kodReferenceNode>& selection)
{
    const bool single = selection.size() == 1;
    for (const kodReferenceNode& reference : selection) {
        const bool smartPresent = reference.hasSmartReference();
        const koReferenceTypes::FileState smartState = reference.getSmartFileState();
        // A smart link that was never written has no file to load, reimport or show.
        const LinkState smartLink{smartPresent, smartPresent && smartState != koReferenceTypes::Unsaved, smartState};
        const bool sourcePresent = reference.hasSourceReference();
        const LinkState sourceLink{sourcePresent, sourcePresent, reference.getSourceFileState()};
        addAnyReference(reference, smartLink, sourceLink);
        if (!reference.isLocked())
            addUnlockedReference(reference, smartLink, sourceLink, single);
    }
}

void koReferenceSelectionFacts::addAnyReference(const kodReferenceNode& reference, const LinkState& smartLink,
                                                const LinkState& sourceLink)
{
    clone |= !reference.isRootNode();
    saveChanges |= smartLink.present;
    saveAs |= smartLink.present;
    smart.open |= smartLink.usable;
    smart.info |= smartLink.usable;
    source.open |= sourceLink.usable;
    source.info |= sourceLink.usable;
}

void koReferenceSelectionFacts::addUnlockedReference(const kodReferenceNode& reference, const LinkState& smartLink,
                                                     const LinkState& sourceLink, bool single)
{
    const bool root = reference.isRootNode();
    const bool loaded = reference.isLoaded();
    const bool linked = sourceLink.usable || smartLink.usable;
    editable = single && !root && koService<koPermissionService>()->canEdit(reference);
    load |= linked && !loaded;
    unload |= linked && loaded && !root;
    repath |= linked;
    convert |= reference.getState() != koReferenceTypes::Unloaded && !smartLink.present;
    remove = createSmart = createSource = true;
    addUnlockedLink(smart, smartLink, loaded, single);
    addUnlockedLink(source, sourceLink, loaded, single);
}

void koReferenceSelectionFacts::addUnlockedLink(Link& facts, const LinkState& link, bool loaded, bool single)
{
    facts.reimportSelected |= link.usable;
    facts.repath |= link.usable;
    facts.reimportOutdated |= link.present && link.fileState == koReferenceTypes::OutOfDate;
    facts.reimportUnloaded |= link.usable && !loaded;
    facts.remove |= link.present;
    facts.replace = single && link.present;
    facts.pathField = single && link.usable;
}
