// Empty: the headers that are compiled once belong to a target with a source.
