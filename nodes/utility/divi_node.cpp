// Quillix_divi binding: written with the offline SDK.
