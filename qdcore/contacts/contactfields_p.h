#pragma once

// Reads a contact from the children of an element that contains other fields too. Internal: not installed.

class Contact;
class DomChildren;

/// Reads the fields that Contact::readFax() reads.
void readFields(Contact& contact, const DomChildren& children);
