// denied: this folder is no room of the house
