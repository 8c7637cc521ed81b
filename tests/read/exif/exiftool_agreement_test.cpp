int placeholder_for_agreement();
