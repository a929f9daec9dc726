// What all tests read of the toolkit is built beside this file.
