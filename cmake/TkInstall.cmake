# what is installed
