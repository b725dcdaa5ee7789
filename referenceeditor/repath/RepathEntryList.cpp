#include "RepathEntryList.h"

RepathEntryList::~RepathEntryList()
{
    qDeleteAll(m_entries);
}
