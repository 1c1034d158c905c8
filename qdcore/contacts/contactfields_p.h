#pragma once

// Reading a contact from the children of an element that has more to give. Internal: not installed.

class Contact;
class DomChildren;

/// Reads what Contact::readFax() reads.
void readFields(Contact& contact, const DomChildren& children);
