// vCard files from address books, phones and mail: the reader and everything a person answers.
#include "FuzzSupport.h"

#include "extras/VCardReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = orvel::fuzz::bytesOf(data, size);
    for (const orvel::Person &person : orvel::readVCards(bytes, 8)) {
        (void)person.proposedName();
        (void)person.metaData();
        for (const QString &property : person.properties())
            (void)person.stringForProperty(property, person.valueForProperty(property));
    }
    return 0;
}
